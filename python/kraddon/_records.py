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
            kw_only=True,
            namespace={"__doc__": text + "\n\n" + "\n".join(
                f"{field}: {help_text}" for field, _, _, help_text in fields),
                "__module__": __name__})
    return classes


_classes = _make_classes()
# Of each class its fields, and of those with records the class of these.
_fields = {name: [(field, record) for field, _, record, _ in fields]
           for name, _, fields in _native.tables[0]}
_documents = {name: (is_list, record) for name, is_list, record in _native.tables[1]}
globals().update(_classes)
__all__ = list(_classes)


def _record(name: str, values: Any) -> Any:
    fields = {}
    for (field, record), value in zip(_fields[name], values):
        fields[field] = value if record is None else [_record(record, one) for one in value]
    return _classes[name](**fields)


def _values(name: str, record: Any) -> Any:
    if not isinstance(record, _classes[name]):
        raise TypeError(f"expected {name}, not {type(record).__name__}")
    values = []
    for field, kind in _fields[name]:
        value = getattr(record, field)
        if kind is not None and isinstance(value, (list, tuple)):
            value = [_values(kind, one) for one in value]
        values.append(value)
    return tuple(values)


def _to_python(document: str, values: Any) -> Any:
    """The records of a document, of its values in the native module."""
    is_list, name = _documents[document]
    if is_list:
        return [_record(name, one) for one in values]
    return None if values is None else _record(name, values)


def _from_python(document: str, value: Any) -> Any:
    is_list, name = _documents[document]
    if value is None:
        return None
    if not is_list:
        return _values(name, value)
    if isinstance(value, (str, bytes)) or not hasattr(value, "__iter__"):
        raise TypeError(f"{document}: expected a list of {name}, not {type(value).__name__}")
    return [_values(name, one) for one in value]
