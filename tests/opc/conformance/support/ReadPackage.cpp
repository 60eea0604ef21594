// SPDX-License-Identifier: MIT
#include "tests/opc/conformance/support/ReadPackage.h"

#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/model/InvalidXMLDocument.h"
#include "opc/model/XercesHelper.h"
#include "opc/plservices/CorePropertiesManager.h"
#include "opc/zippackage/ZipPhysicalPackage.h"
#include "tests/opc/model/PackageFixture.h"
#include "tests/support/TemporaryFolder.h"

namespace test::conformance {
namespace {

using opc::interfaces::OpenMode;
using opc::model::Package;
using opc::model::PartName;
using opc::zippackage::ZipPhysicalPackage;

constexpr char16_t kCoreRelationType[] =
    u"http://schemas.openxmlformats.org/package/2006/relationships/metadata/core-properties";

std::map<std::string, std::string> targetsOf(opc::model::RelationshipSource& source) {
  std::map<std::string, std::string> targets;
  for (const auto& one : source.getRelationships()) {
    targets[opc::toUtf8(one.getId())] = opc::toUtf8(one.getTargetURI().toString());
  }
  return targets;
}

void readParts(Package& package, ReadPackage& into) {
  package.visitParts("", [&](opc::model::PartId id) {
    const std::string name(package.itemNameOf(id));
    into.parts[name] = {package.contentTypeOf(id).ascii(), readAll(*package.openPart(id))};
  });
  for (const auto& [name, part] : into.parts) {
    const auto handle = package.getPart(PartName::fromItemName(name));
    const auto targets = targetsOf(*handle);
    if (name == "b.m") into.targetsOfPart = targets;
  }
}

void readCore(Package& package, ReadPackage& into) {
  opc::plservices::CorePropertiesManager(package).getCoreProperties();
  for (const auto& one : package.getRelationshipsByType(kCoreRelationType)) {
    const auto part = package.getPart(one.targetName());
    into.core = opc::plservices::CorePropertiesPart::read(*part->getInputStream());
  }
}

void readAllOf(Package& package, ReadPackage& into) {
  package.open(OpenMode::Read);
  into.opened = true;
  into.stray = package.strayItems();
  into.untyped = package.untypedItems();
  into.targets = targetsOf(package);
  readParts(package, into);
  readCore(package, into);
}

std::string withPackage(const std::string& bytes, OpenMode mode,
                        const std::function<void(Package&)>& action) {
  const TemporaryFolder folder;
  const auto path = folder / "p.kraddon";
  if (mode != OpenMode::Create) writeFile(path, bytes);
  ZipPhysicalPackage physical(path.u16string(), false, u"");
  Package package(physical, true);
  package.open(mode);
  action(package);
  package.close(false);
  return readFile(path);
}

}  // namespace

ReadPackage readPackage(const std::string& bytes) {
  const TemporaryFolder folder;
  writeFile(folder / "p.kraddon", bytes);
  ZipPhysicalPackage physical((folder / "p.kraddon").u16string(), false, u"");
  Package package(physical, true);
  ReadPackage read;
  read.rule = refusalOf([&] {
    try {
      readAllOf(package, read);
    } catch (const opc::Exception& fault) {
      read.fault = fault.what();
      throw;
    }
  });
  return read;
}

std::string writtenPackage(const std::function<void(Package&)>& fill) {
  return withPackage("", OpenMode::Create, fill);
}

std::string changedPackage(const std::string& bytes, const std::function<void(Package&)>& change) {
  return withPackage(bytes, OpenMode::Modify, change);
}

std::shared_ptr<opc::model::Part> addPart(Package& package, std::u16string_view name,
                                          std::u16string_view type, std::string_view text) {
  const opc::model::StandardPartInfo info(opc::interfaces::CompressionType::Normal, 0);
  auto part = package.createPart(PartName(name), opc::model::ContentType(type), info);
  writeText(*part->getOutputStream(), text);
  return part;
}

void writeTextOf(Package& package, std::u16string_view name, std::string_view text) {
  writeText(*package.getPart(PartName(name))->getOutputStream(), text);
}

std::string refusalOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const opc::model::InvalidXMLDocument& fault) {
    return fault.rule();
  } catch (const opc::FormatError& fault) {
    return fault.rule();
  } catch (const opc::Exception&) {
    return "";
  }
  return "none";
}

}  // namespace test::conformance
