// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "addon/build/Screenshot.h"
#include "addon/packaging/AddonProperties.h"
#include "addon/packaging/DocumentRemoval.h"
#include "addon/packaging/Documents.h"
#include "addon/project/Guid.h"
#include "opc/Text.h"
#include "python/Bindings.h"
#include "python/RecordValues.h"

namespace python {

namespace py = pybind11;

using addon::packaging::AddonPackage;
using addon::packaging::AddonProperties;
using addon::packaging::DocumentTable;
using addon::packaging::Field;
using addon::packaging::OwnedDocument;
using addon::packaging::Record;

namespace {

const DocumentTable& tableNamed(const std::string& name) {
  for (const DocumentTable* table : addon::packaging::documents()) {
    if (table->name() == name) return *table;
  }
  throw py::key_error(name);
}

/// None for a single document that the package does not hold.
py::object document(PackageHandle& handle, const std::string& name) {
  const DocumentTable& table = tableNamed(name);
  const bool isAlwaysThere = table.isList || &table == &AddonProperties::kTable;
  bool isThere = isAlwaysThere;
  const OwnedDocument loaded = handle.use(name, [&](AddonPackage& package) {
    isThere = isAlwaysThere || addon::packaging::isPresent(table, package);
    return isThere ? addon::packaging::loadDocument(package, table) : table.make();
  });
  return isThere ? toPython(table, loaded.record) : py::none();
}

/// A new package takes a GUID that nothing names from the name of the add-on, as a build does.
void giveGuid(AddonProperties& properties) {
  if (!properties.GUID.empty()) return;
  const std::string name = opc::toUtf8(properties.name);
  properties.GUID = opc::fromUtf8(addon::project::guidOfName(name));
}

/// What never changes keeps its value. Throws for another one, unless it is just the default.
void keepFixed(const DocumentTable& table, const Record& given, AddonPackage& package) {
  const auto& fields = table.record.fields;
  if (std::none_of(fields.begin(), fields.end(), [](const Field& one) { return one.isFixed; })) {
    return;
  }
  const OwnedDocument stored = addon::packaging::loadDocument(package, table);
  for (const Field& field : fields) {
    if (!field.isFixed) continue;
    const std::u16string& old = stored.record.text(field);
    const std::u16string text = std::exchange(given.text(field), old);
    if (text == old || opc::toUtf8(text) == field.initial) continue;
    throw opc::Exception(
        opc::ErrorCode::InvalidText,
        opc::sentence("cannot change", fmt::format("{}.{}", table.name(), field.name),
                      fmt::format("it is '{}' and cannot change", opc::toUtf8ForDisplay(old))));
  }
}

void setDocument(PackageHandle& handle, const std::string& name, const py::object& value) {
  const DocumentTable& table = tableNamed(name);
  const OwnedDocument given = table.make();
  if (!value.is_none()) fromPython(table, given.record, value);
  if (value.is_none()) {
    handle.change(name, [&](AddonPackage& package) {
      addon::packaging::removeDocument(package.logicalPackage(), *given.part);
    });
    return;
  }
  if (&table == &AddonProperties::kTable && handle.isNew()) {
    giveGuid(dynamic_cast<AddonProperties&>(*given.part));
  }
  handle.use(name, [&](AddonPackage& package) { keepFixed(table, given.record, package); });
  handle.change(name, [&](AddonPackage& package) {
    addon::packaging::replaceDocument(package, *given.part);
  });
}

py::object screenshot(PackageHandle& handle) {
  const auto image = handle.use("screenshot", [](AddonPackage& package) {
    const bool isThere = !addon::packaging::screenshotPart(package).empty();
    return isThere ? std::optional(package.getScreenshot()) : std::nullopt;
  });
  if (!image) return py::none();
  return py::bytes(reinterpret_cast<const char*>(image->data()), image->size());
}

void setScreenshot(PackageHandle& handle, const std::string& image) {
  std::u16string path;
  withoutGil({image}, [&] {
    addon::build::checkScreenshot(image);
    path = opc::fromUtf8(image);
  });
  handle.change("screenshot", [&](AddonPackage& package) {
    addon::build::storeScreenshot(package, handle.path(), path);
  });
}

void removeScreenshot(PackageHandle& handle) {
  handle.change("screenshot", [](AddonPackage& package) {
    addon::packaging::removeScreenshot(package.logicalPackage());
  });
}

}  // namespace

void bindDocuments(PackageClass& package) {
  package.def("document", document)
      .def("set_document", setDocument)
      .def("screenshot", screenshot)
      .def("set_screenshot",
           [](PackageHandle& handle, const py::bytes& image) { setScreenshot(handle, image); })
      .def("remove_screenshot", removeScreenshot);
}

}  // namespace python
