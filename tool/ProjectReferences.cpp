// SPDX-License-Identifier: MIT
#include "tool/ProjectReferences.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

#include "addon/checks/AddonFindings.h"
#include "addon/checks/PathCheck.h"
#include "opc/Exception.h"
#include "opc/Text.h"

namespace tool {

using addon::checks::findingNamed;
using addon::checks::IgnoreRules;
using addon::checks::kMissingAppFile;
using addon::checks::kMissingExampleCode;
using addon::checks::kMissingSearchPath;
using addon::checks::PathCheck;
using addon::checks::PathReference;
using addon::project::Position;
using addon::project::Text;
using opc::checks::Finding;
using opc::checks::FindingId;
using opc::checks::Report;
using Kind = PathReference::Kind;

namespace {

/// Looks paths of the manifest up, and keeps the first by position that is not there.
class ReferenceSearch {
 public:
  ReferenceSearch(const IgnoreRules& rules, addon::packaging::AddonPackage& package)
      : rules_(rules), check_(package.fileSystem(), report_) {}

  /// `id` is the finding that a missing one is.
  void look(const Text& path, Kind kind, FindingId id, const std::string& key,
            const std::string& what) {
    if (!path.isGiven()) return;
    const std::size_t before = report_.findings().size();
    check_.check({opc::fromUtf8(path.value), kind, id, what, {}, 0});
    if (report_.findings().size() == before) return;
    const Finding& finding = report_.findings().back();
    if (rules_.ignores(id) || rules_.ignores(finding.id)) return;
    if (position_ && *position_ < path.position) return;
    position_ = path.position;
    why_ = fmt::format("{}: {}", key, finding.message);
  }

  void raise() const {
    if (position_) throw ManifestError(*position_, why_);
  }

 private:
  const IgnoreRules& rules_;
  Report report_;
  PathCheck check_;
  std::optional<Position> position_;
  std::string why_;
};

void lookForExamples(const Manifest& manifest, ReferenceSearch& search) {
  for (std::size_t i = 0; i < manifest.categories.size(); ++i) {
    const auto& examples = manifest.categories[i].examples;
    for (std::size_t j = 0; j < examples.size(); ++j) {
      const std::string key = fmt::format("category[{}].example[{}]", i, j);
      const std::string name = fmt::format("the example '{}'", examples[j].name.value);
      for (const auto& [path, part] :
           {std::pair(&examples[j].source, ".source"), std::pair(&examples[j].main, ".main")}) {
        if (!path->value.empty())
          search.look(*path, Kind::File, kMissingExampleCode, key + part, name);
      }
    }
  }
}

/// The id that a rule begins with, as it is written.
std::string idIn(const Text& rule, std::string_view id, const std::string& key) {
  try {
    return opc::checks::idOf(findingNamed(id).id.number);
  } catch (const opc::Exception& error) {
    throw ManifestError(rule.position, fmt::format("{}: {}", key, error.what()));
  }
}

/// A manifest outlives the program that reads it, so that it has one way of writing a rule, which
/// is that of its schema.
void refuseLooseRule(const Text& rule, const std::string& key) {
  const std::size_t colon = std::min(rule.value.find(':'), rule.value.size());
  const std::string strict =
      idIn(rule, rule.value.substr(0, colon), key) + rule.value.substr(colon);
  if (colon + 1 == rule.value.size()) {
    throw ManifestError(
        rule.position,
        fmt::format("{}: expected a pattern after the colon, got '{}'", key, rule.value));
  }
  if (rule.value != strict) {
    throw ManifestError(rule.position,
                        fmt::format("{}: expected '{}', got '{}'", key, strict, rule.value));
  }
}

}  // namespace

IgnoreRules ignoreRulesOf(const Manifest& manifest) {
  std::vector<std::string> rules;
  for (const Text& rule : manifest.verify.ignore.value) {
    const std::string key = fmt::format("verify.ignore[{}]", rules.size());
    refuseLooseRule(rule, key);
    rules.push_back(rule.value);
  }
  return IgnoreRules(rules);
}

void checkReferences(const Manifest& manifest, const IgnoreRules& rules,
                     addon::packaging::AddonPackage& package) {
  ReferenceSearch search(rules, package);
  for (std::size_t i = 0; i < manifest.apps.size(); ++i) {
    const auto& app = manifest.apps[i];
    search.look(app.file, Kind::File, kMissingAppFile, fmt::format("app[{}].file", i),
                fmt::format("the app '{}'", app.name.value));
  }
  lookForExamples(manifest, search);
  const auto& paths = manifest.configuration.korvanPaths.value;
  for (std::size_t i = 0; i < paths.size(); ++i) {
    search.look(paths[i], Kind::Folder, kMissingSearchPath,
                fmt::format("configuration.korvan-paths[{}]", i), "the search path");
  }
  search.raise();
}

}  // namespace tool
