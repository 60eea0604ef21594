// SPDX-License-Identifier: MIT
#include "addon/packaging/Documents.h"

#include <array>

#include "addon/packaging/AddonAppInstallList.h"
#include "addon/packaging/AddonConfiguration.h"
#include "addon/packaging/AddonExamples.h"
#include "addon/packaging/AddonLicense.h"
#include "addon/packaging/AddonProperties.h"
#include "addon/packaging/AddonRevisionHistory.h"
#include "addon/packaging/AddonSystemRequirements.h"
#include "addon/packaging/ScreenshotPart.h"
#include "opc/Text.h"

namespace addon::packaging {

namespace {

std::u16string text(const char* before, const char* stem, const char* after = "") {
  return opc::fromUtf8(std::string(before) + stem + after);
}

/// The part that the one relationship of that type leads to, as the package spells it, or "". One
/// that is missing is named as the relationship does.
std::string findPart(AddonPackage& package, const std::u16string& type) {
  auto& model = package.logicalPackage();
  const auto found = model.getRelationshipsByType(type);
  const bool isOne =
      found.size() == 1 && found[0].getTargetMode() == opc::model::TargetMode::Internal;
  if (!isOne) return {};
  const opc::model::PartName target = found[0].targetName();
  if (!model.hasPart(target)) return target.canonical();
  return "/" + std::string(model.itemNameOf(model.getPart(target)->id()));
}

}  // namespace

std::u16string DocumentTable::partName() const {
  return text("/metadata/", xml, ".xml");
}

std::u16string DocumentTable::contentType() const {
  return text("application/vnd.pellandry.korvan.addon.", contentTypeStem, "+xml");
}

std::u16string DocumentTable::namespaceURI() const {
  return SchemaRoot + text("/korvan/addon/2014/", xml);
}

std::u16string DocumentTable::relationshipType() const {
  return SchemaRoot + text("/korvan/addon/2014/relationships/", xml);
}

std::span<const DocumentTable* const> documents() {
  static constexpr std::array kDocuments{
      &AddonProperties::kTable,         &AddonLicense::kTable,  &AddonConfiguration::kTable,
      &AddonAppInstallList::kTable,     &AddonExamples::kTable, &AddonRevisionHistory::kTable,
      &AddonSystemRequirements::kTable,
  };
  return kDocuments;
}

void loadDocument(AddonPackage& package, XMLPartType& document) {
  if (auto* properties = dynamic_cast<AddonProperties*>(&document)) {
    package.getAddonProperties(*properties);
  } else {
    package.getXMLPart(document);
  }
}

void storeDocument(AddonPackage& package, XMLPartType& document) {
  if (auto* properties = dynamic_cast<AddonProperties*>(&document)) {
    package.setAddonProperties(*properties);
  } else {
    package.addXMLPart(document);
  }
}

OwnedDocument loadDocument(AddonPackage& package, const DocumentTable& table) {
  OwnedDocument document = table.make();
  loadDocument(package, *document.part);
  return document;
}

std::vector<PresentDocument> presentDocuments(AddonPackage& package) {
  std::vector<PresentDocument> present;
  for (const DocumentTable* table : documents()) {
    std::string part = findPart(package, table->relationshipType());
    if (!part.empty()) present.push_back({table->name(), std::move(part)});
  }
  return present;
}

bool isPresent(const DocumentTable& table, AddonPackage& package) {
  return !findPart(package, table.relationshipType()).empty();
}

std::string screenshotPart(AddonPackage& package) {
  return findPart(package, ScreenshotPart::relationshipType());
}

}  // namespace addon::packaging
