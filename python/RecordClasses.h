// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "addon/packaging/Documents.h"

// What records are called in Python.

namespace python {

/// The classes of all records, those of their fields first.
std::vector<const addon::packaging::RecordTable*> recordClasses();

/// "ExampleCategory"
std::string classNameOf(const addon::packaging::RecordTable& table);

/// "relative_path" for "relativePath", "guid" for "GUID".
std::string attributeNameOf(std::string_view field);

}  // namespace python
