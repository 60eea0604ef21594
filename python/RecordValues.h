// SPDX-License-Identifier: MIT
#pragma once

#include <pybind11/pybind11.h>

#include "addon/packaging/DocumentTable.h"

// Documents as plain values of Python, by their tables: a record is a tuple of its fields in their
// order, a list document the list of its records. The Python layer makes dataclasses of them.

namespace python {

/// The caller holds the GIL, here and below.
pybind11::object toPython(const addon::packaging::DocumentTable& table,
                          const addon::packaging::ConstRecord& document);

/// Fills an empty document. Raises TypeError for a value of another type, ValueError for a text
/// that XML cannot carry; both name the field.
void fromPython(const addon::packaging::DocumentTable& table,
                const addon::packaging::Record& document, const pybind11::handle& value);

/// Of each document its name, whether it is a list, and the number of its record class; of each
/// record class its noun, its help, and of each field the name, the kind, the default, the help and
/// the number of its records' class or None.
pybind11::tuple describeTables();

}  // namespace python
