// SPDX-License-Identifier: MIT
#pragma once

#include <pybind11/pybind11.h>

#include "python/PackageHandle.h"

// What makes the module: each adds the bindings of one subject.

namespace python {

using PackageClass = pybind11::class_<PackageHandle, std::shared_ptr<PackageHandle>>;

void bindDocuments(PackageClass& package);
void bindFiles(pybind11::module_& module, PackageClass& package);
void bindChanges(PackageClass& package);
void bindOperations(pybind11::module_& module, PackageClass& package);

}  // namespace python
