// SPDX-License-Identifier: MIT
#include <pybind11/stl.h>

#include "python/Bindings.h"
#include "python/RecordValues.h"

namespace py = pybind11;

using python::PackageHandle;

// The functions take checked arguments: the Python layer has the interface for users. Paths of the
// disk are bytes; paths in the package are text.
PYBIND11_MODULE(_native, module) {
  module.attr("version") = KRADDON_VERSION;
  module.attr("tables") = python::describeTables();
  python::PackageClass package(module, "Package", python::plainType());
  package
      .def(py::init(
          [](const py::bytes& path, char mode, std::optional<std::int64_t> timestamp, int level) {
            return PackageHandle::open(path, mode, {timestamp, level});
          }))
      .def("close", &PackageHandle::close)
      .def("discard", &PackageHandle::discard)
      .def_property_readonly("closed", &PackageHandle::isClosed)
      .def_property_readonly("read_only", &PackageHandle::isReadOnly)
      .def_property_readonly("path",
                             [](const PackageHandle& handle) { return py::bytes(handle.path()); });
  python::bindDocuments(package);
  python::bindFiles(module, package);
  python::bindChanges(package);
  python::bindOperations(module, package);
}
