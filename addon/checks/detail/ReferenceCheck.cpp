// SPDX-License-Identifier: MIT
#include "addon/checks/detail/ReferenceCheck.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "addon/checks/AddonFindings.h"
#include "addon/checks/PathCheck.h"
#include "addon/checks/detail/ReadableDocument.h"
#include "addon/packaging/AddonRevisionHistory.h"
#include "addon/packaging/Documents.h"
#include "addon/packaging/ScreenshotPart.h"
#include "opc/Text.h"
#include "opc/checks/Finding.h"
#include "opc/model/DomText.h"
#include "opc/model/PackageHelper.h"

namespace addon::checks::detail {

using opc::checks::quoted;
using opc::checks::Report;
using opc::model::trimXmlSpace;
using packaging::AddonPackage;
using packaging::AddonRevisionHistory;
using packaging::DocumentTable;
using packaging::FoundValue;

namespace {

/// Whose path it is.
std::string ownerOf(const ReferenceRule& rule, const FoundValue& value) {
  if (value.in.table == nullptr) return rule.what;
  const std::string choice =
      value.choice.empty() ? "" : opc::toUtf8(value.choice) + " file of the ";
  return "the " + choice + value.in.table->noun + " " + quoted(value.in.name);
}

bool mayHavePaths(const DocumentTable& table) {
  std::vector<const packaging::RecordTable*> tables{&table.record};
  for (std::size_t i = 0; i < tables.size(); ++i) {
    for (const packaging::Field& field : tables[i]->fields) {
      if (ruleOf(field.reference) != nullptr) return true;
      if (field.kind() == packaging::FieldKind::Records) tables.push_back(&field.table());
    }
  }
  return false;
}

void checkPaths(AddonPackage& package, const DocumentTable& table, PathCheck& paths) {
  if (!mayHavePaths(table)) return;
  ReadableDocument document(package, table);
  DocumentText* text = document.text();
  if (text == nullptr) return;
  packaging::visitValues(document.root(), text->root(), [&](const FoundValue& value) {
    const ReferenceRule* rule = ruleOf(value.field.reference);
    if (rule == nullptr) return;
    paths.check({value.text, rule->kind, rule->id, ownerOf(*rule, value), document.part(),
                 text->lineOf(value.in.dom)});
  });
}

std::u16string versionOf(const AddonFacts& facts) {
  if (!facts.core) return {};
  return std::u16string(trimXmlSpace(facts.core->getVersion().value_or(u"")));
}

void checkThumbnail(AddonPackage& package, Report& report) {
  auto& model = package.logicalPackage();
  const Destination screenshot = follow(model, packaging::ScreenshotPart::relationshipType());
  if (screenshot.kind != Destination::Kind::Part) return;
  const Destination thumbnail =
      follow(model, opc::model::PackageHelper::getThumbnailRelationshipType());
  if (thumbnail.kind == Destination::Kind::Several) return;
  if (thumbnail.name == screenshot.name) return;
  const bool hasNone = thumbnail.kind == Destination::Kind::Nowhere;
  report.add(kThumbnailDiffers, screenshot.name,
             "this is the screenshot, but the package's thumbnail is " +
                 (hasNone ? std::string("none") : quoted(thumbnail.name)));
}

void checkNewestRevision(AddonPackage& package, const AddonFacts& facts, Report& report) {
  const std::u16string version = versionOf(facts);
  if (version.empty()) return;
  AddonRevisionHistory history;
  ReadableDocument document(package, AddonRevisionHistory::kTable);
  if (document.text() == nullptr) return;
  const auto elements = document.elementsOf<&AddonRevisionHistory::revisions>();
  for (const auto* element : elements) history.revisions.emplace_back(element);
  if (history.revisions.empty()) return;
  const auto newest = newestOf(history.revisions);
  const bool isCurrent = std::any_of(newest.begin(), newest.end(), [&](const auto* revision) {
    return trimXmlSpace(revision->version) == version;
  });
  if (isCurrent) return;
  const auto index = static_cast<std::size_t>(newest.front() - history.revisions.data());
  report.add(kRevisionMismatch, document.part(),
             "the newest revision is " + quoted(newest.front()->version) +
                 ", the add-on's version is " + quoted(version),
             document.text()->lineOf(elements[index]));
}

}  // namespace

void checkReferences(AddonPackage& package, const AddonFacts& facts, Report& report) {
  checkThumbnail(package, report);
  checkNewestRevision(package, facts, report);
  checkDuplicateGuids(facts, report);
  if (!isReadable([&] { package.fileSystem().getRoot(); })) return;
  PathCheck paths(package.fileSystem(), report);
  for (const bool isList : {true, false}) {  // lists first
    for (const DocumentTable* table : packaging::documents()) {
      if (table->isList == isList) checkPaths(package, *table, paths);
    }
  }
}

}  // namespace addon::checks::detail
