# SPDX-License-Identifier: MIT
"""Between records and the plain values that the native module takes, by the tables."""
from __future__ import annotations

from typing import Any

from . import _native, _records

# Of each class its fields, and of those with records the class of these.
_FIELDS = {name: [(field, record) for field, _, record, _ in fields]
           for name, _, fields in _native.tables[0]}
# Of each document whether it is a list, and the class of its records.
_DOCUMENTS = {name: (is_list, record) for name, is_list, record in _native.tables[1]}


def _record(name: str, values: Any) -> Any:
    fields = {}
    for (field, record), value in zip(_FIELDS[name], values):
        fields[field] = value if record is None else [_record(record, one) for one in value]
    return getattr(_records, name)(**fields)


def _values(name: str, record: Any) -> Any:
    if not isinstance(record, getattr(_records, name)):
        raise TypeError(f"expected {name}, not {type(record).__name__}")
    values = []
    for field, kind in _FIELDS[name]:
        value = getattr(record, field)
        if kind is not None and isinstance(value, (list, tuple)):
            value = [_values(kind, one) for one in value]
        values.append(value)
    return tuple(values)


def to_python(document: str, values: Any) -> Any:
    """The records of a document, of its values in the native module."""
    is_list, name = _DOCUMENTS[document]
    if is_list:
        return [_record(name, one) for one in values]
    return None if values is None else _record(name, values)


def from_python(document: str, value: Any) -> Any:
    is_list, name = _DOCUMENTS[document]
    if value is None:
        if document == "properties":
            raise TypeError("a package always has properties")
        return None
    if not is_list:
        return _values(name, value)
    if isinstance(value, (str, bytes)) or not hasattr(value, "__iter__"):
        raise TypeError(f"{document}: expected a list of {name}, not {type(value).__name__}")
    return [_values(name, one) for one in value]
