# SPDX-License-Identifier: MIT
"""The classes of records, made from the tables of the documents."""
from __future__ import annotations

import dataclasses
from typing import Any

from . import _native


def _field(initial: Any) -> Any:
    if initial is None:
        return dataclasses.field(default_factory=list)
    return dataclasses.field(default=initial)


def _type_of(initial: Any, record: str | None) -> str:
    if initial is None:
        return f"list[{record or 'str'}]"
    return type(initial).__name__


def _make_classes() -> dict[str, Any]:
    classes = {}
    for name, text, fields in _native.tables[0]:
        classes[name] = dataclasses.make_dataclass(
            name,
            [(field, _type_of(initial, record), _field(initial))
             for field, initial, record, _ in fields],
            namespace={"__doc__": text + "\n\n" + "\n".join(
                f"{field}: {help_text}" for field, _, _, help_text in fields),
                "__module__": __name__})
    return classes


_classes = _make_classes()
globals().update(_classes)
__all__ = list(_classes)
