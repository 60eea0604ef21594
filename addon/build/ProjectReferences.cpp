// SPDX-License-Identifier: MIT
#include "addon/build/ProjectReferences.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

#include "addon/checks/PathCheck.h"
#include "opc/Exception.h"
#include "opc/Text.h"

namespace addon::build {

using addon::checks::findingNamed;
using addon::checks::IgnoreRules;
using addon::checks::PathCheck;
using addon::checks::ReferenceRule;
using addon::packaging::ConstRecord;
using addon::packaging::Field;
using addon::packaging::FieldKind;
using addon::packaging::Record;
using addon::project::Position;
using addon::project::Text;
using opc::checks::Finding;
using opc::checks::Report;

namespace {

/// Looks paths of the manifest up, and keeps the first by position that is not there.
class ReferenceSearch {
 public:
  ReferenceSearch(const IgnoreRules& rules, addon::packaging::AddonPackage& package)
      : rules_(rules), check_(package.fileSystem(), report_) {}

  void look(const std::u16string& path, Position position, const ReferenceRule& rule,
            const std::string& key, const std::string& what) {
    const std::size_t before = report_.findings().size();
    check_.check({path, rule.kind, rule.id, what, {}, 0});
    if (report_.findings().size() == before) return;
    const Finding& finding = report_.findings().back();
    if (rules_.ignores(rule.id) || rules_.ignores(finding.id)) return;
    if (position_ && *position_ < position) return;
    position_ = position;
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

/// Whose paths they are.
std::string ownerOf(const ConstRecord& record) {
  const std::string name = addon::project::nameOf(record);
  return name.empty() ? "the search path" : fmt::format("the {} '{}'", record.table().noun, name);
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
  const auto visit = [&](const Record& record, const Field& field, const std::string& key) {
    const ReferenceRule* rule = addon::checks::ruleOf(field.reference);
    // What 'verify' only warns of does not stop a build here.
    if (rule == nullptr || rule->id.severity != opc::checks::Severity::Error) return;
    const auto look = [&](const std::u16string& path, const std::string& keyOfPath) {
      search.look(path, manifest.positionOf(keyOfPath), *rule, keyOfPath, ownerOf(record));
    };
    if (field.kind() == FieldKind::Text) {
      if (!record.isEmpty(field)) look(record.text(field), key);
      return;
    }
    const auto& paths = record.texts(field);
    for (std::size_t i = 0; i < paths.size(); ++i) look(paths[i], fmt::format("{}[{}]", key, i));
  };
  for (const auto& document : manifest.documents) addon::project::visitFields(document, visit);
  search.raise();
}

}  // namespace addon::build
