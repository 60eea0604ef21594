// SPDX-License-Identifier: MIT
#include "tool/json/Documents.h"

#include <fmt/format.h>

#include "addon/packaging/ScreenshotPart.h"
#include "opc/Text.h"
#include "text/Suggest.h"
#include "tool/line/Command.h"
#include "tool/process/Errors.h"

namespace tool::json {

using addon::packaging::AddonPackage;
using addon::packaging::documents;
using addon::packaging::DocumentTable;
using addon::packaging::OwnedDocument;

namespace {

/// The part that the one relationship of that type leads to, as the package spells it, or "". One
/// that is missing is named as the relationship does.
std::string findPart(AddonPackage& package, const std::u16string& type) {
  auto& model = package.logicalPackage();
  const auto found = model.getRelationshipsByType(type);
  const bool isOne =
      found.size() == 1 && found[0].getTargetMode() == opc::model::TargetMode::Internal;
  if (!isOne) return {};
  const opc::model::PartName target(found[0].getTargetURI().toString());
  if (!model.hasPart(target)) return target.canonical();
  return "/" + std::string(model.itemNameOf(model.getPart(target)->id()));
}

}  // namespace

std::vector<std::string> documentNames() {
  std::vector<std::string> names;
  for (const DocumentTable* table : documents()) names.emplace_back(table->name());
  return names;
}

const DocumentTable& findDocument(std::string_view name) {
  std::vector<std::string_view> names;
  for (const DocumentTable* table : documents()) {
    if (table->name() == name) return *table;
    names.emplace_back(table->name());
  }
  const std::string all = fmt::format("the documents are {}", fmt::join(names, ", "));
  throw process::UsageError(
      process::sentence("unknown document", name, text::suggestion(name, names, all)));
}

OwnedDocument load(const DocumentTable& table, AddonPackage& package) {
  OwnedDocument document = table.make();
  loadDocument(package, *document.part);
  return document;
}

bool isPresent(const DocumentTable& table, AddonPackage& package) {
  return !findPart(package, table.relationshipType()).empty();
}

std::vector<PresentDocument> presentDocuments(AddonPackage& package) {
  std::vector<PresentDocument> present;
  for (const DocumentTable* table : documents()) {
    std::string part = findPart(package, table->relationshipType());
    if (!part.empty()) present.push_back({table->name(), std::move(part)});
  }
  return present;
}

std::string screenshotPart(AddonPackage& package) {
  return findPart(package, addon::packaging::ScreenshotPart::relationshipType());
}

}  // namespace tool::json
