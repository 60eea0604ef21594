// SPDX-License-Identifier: MIT
#include "addon/checks/detail/ReferenceCheck.h"

#include <algorithm>
#include <iterator>

#include "addon/checks/AddonFindings.h"
#include "addon/checks/PathCheck.h"
#include "addon/checks/detail/Readable.h"
#include "addon/checks/detail/ReadableDocument.h"
#include "addon/packaging/Documents.h"
#include "opc/Text.h"
#include "opc/checks/Finding.h"

namespace addon::checks::detail {

using opc::checks::quoted;
using opc::checks::Report;
using packaging::AddonPackage;
using packaging::DocumentTable;
using packaging::FoundValue;
using packaging::Reference;
using Kind = PathReference::Kind;

namespace {

/// How a path is checked; what a path outside of records is called.
struct ReferenceRule {
  Reference reference;
  Kind kind;
  FindingId id;
  const char* what;
};
constexpr ReferenceRule kRules[] = {
    {Reference::App, Kind::File, kMissingAppFile, ""},
    {Reference::ExampleCode, Kind::File, kMissingExampleCode, ""},
    {Reference::ExampleImage, Kind::File, kMissingExampleImage, ""},
    {Reference::SearchPath, Kind::Folder, kMissingSearchPath, "the search path"},
    {Reference::ClassPath, Kind::Either, kMissingClassPath, "the Java class path"},
};

/// Whose path it is.
std::string ownerOf(const ReferenceRule& rule, const FoundValue& value) {
  if (value.in.table == nullptr) return rule.what;
  const std::string choice = value.choice.empty() ? "" : opc::toUtf8(value.choice) + " of the ";
  return "the " + choice + value.in.table->noun + " " + quoted(value.in.name);
}

void checkPaths(AddonPackage& package, const DocumentTable& table, PathCheck& paths) {
  ReadableDocument document(package, table);
  DocumentText* text = document.text();
  if (text == nullptr) return;
  packaging::visitValues(document.root(), text->root(), [&](const FoundValue& value) {
    const auto* rule = std::find_if(
        std::begin(kRules), std::end(kRules),
        [&](const ReferenceRule& one) { return one.reference == value.field.reference; });
    if (rule == std::end(kRules)) return;
    paths.check({value.text, rule->kind, rule->id, ownerOf(*rule, value), document.part(),
                 text->lineOf(value.in.dom)});
  });
}

}  // namespace

void checkReferences(AddonPackage& package, Report& report) {
  const opc::model::XercesGuard guard;  // one start for all documents
  checkThumbnail(package, report);
  checkNewestRevision(package, report);
  checkGuids(package, report);
  if (!isReadable([&] { package.fileSystem().getRoot(); })) return;
  for (const auto& file : package.fileSystem().unreadable()) {
    report.add(kFileOutsideTree, file.name, file.why);
  }
  PathCheck paths(package.fileSystem(), report);
  for (const bool isList : {true, false}) {  // lists first
    for (const DocumentTable* table : packaging::documents()) {
      if (table->isList == isList) checkPaths(package, *table, paths);
    }
  }
}

}  // namespace addon::checks::detail
