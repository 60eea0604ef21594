// SPDX-License-Identifier: MIT
#include "addon/build/VerifyRules.h"

#include <fmt/format.h>

#include <algorithm>

#include "addon/build/BuildError.h"
#include "addon/build/detail/ReadFile.h"
#include "opc/Exception.h"

namespace addon::build {

using addon::checks::findingNamed;
using addon::checks::RuleLists;
using addon::project::Text;
using addon::project::Texts;

namespace {

constexpr std::size_t kMaxPolicySize = std::size_t{16} << 20;

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

std::vector<std::string> rulesOf(const Texts& texts, std::string_view name) {
  std::vector<std::string> rules;
  for (const Text& rule : texts.value) {
    refuseLooseRule(rule, fmt::format("verify.{}[{}]", name, rules.size()));
    rules.push_back(rule.value);
  }
  return rules;
}

}  // namespace

RuleLists ruleListsOf(const VerifySection& section) {
  return {rulesOf(section.ignore, "ignore"), rulesOf(section.error, "error"),
          rulesOf(section.warn, "warn")};
}

VerifySection openPolicy(const std::string& path) {
  return addon::project::readPolicy(detail::readWholeFile(path, kMaxPolicySize));
}

Rules rulesOf(const RuleSources& sources) {
  RuleLists lists = sources.lists;
  bool isStrict = sources.isStrict;
  const auto append = [&](const VerifySection& section) {
    lists.append(ruleListsOf(section));
    isStrict = isStrict || section.strict.value;
  };
  if (sources.manifestFolder) {
    try {
      append(openProject(*sources.manifestFolder).manifest.verify);
    } catch (const ManifestError& error) {
      throw BuildError(error.in(manifestPath(*sources.manifestFolder)));
    }
  }
  if (sources.policy) {
    try {
      append(openPolicy(*sources.policy));
    } catch (const ManifestError& error) {
      throw BuildError(error.in(*sources.policy, "bad policy"));
    }
  }
  return {addon::checks::FindingRules(lists), isStrict};
}

}  // namespace addon::build
