// SPDX-License-Identifier: MIT
#pragma once

#include <pybind11/pybind11.h>

#include "python/PackageHandle.h"

// What makes the module: each adds the bindings of one subject.

namespace python {

using PackageClass = pybind11::class_<PackageHandle, std::shared_ptr<PackageHandle>>;

/// Python's own metaclass, which type checkers expect.
inline pybind11::metaclass plainType() {
  return pybind11::metaclass(reinterpret_cast<PyObject*>(&PyType_Type));
}

void bindDocuments(PackageClass& package);
void bindFiles(pybind11::module_& module, PackageClass& package);
void bindChanges(PackageClass& package);
void bindOperations(pybind11::module_& module, PackageClass& package);

}  // namespace python
