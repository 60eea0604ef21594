// SPDX-License-Identifier: MIT
#include "addon/checks/FindingRules.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

#include "addon/checks/Catalogue.h"
#include "opc/Exception.h"
#include "opc/Text.h"
#include "text/Suggest.h"

namespace addon::checks {

using opc::checks::Finding;
using opc::checks::FindingId;
using opc::checks::FindingInfo;
using opc::checks::Severity;

namespace {

// A folder's pattern takes what is below it.
bool matchesPathOrFolder(const addon::project::Pattern& pattern, std::string_view path) {
  if (pattern.matches(path, path.ends_with('/'))) return true;
  for (std::size_t slash = path.rfind('/'); slash != std::string_view::npos && slash > 0;
       slash = path.rfind('/', slash - 1)) {
    if (pattern.matches(path.substr(0, slash), true)) return true;
  }
  return false;
}

}  // namespace

std::vector<std::string> findingIds() {
  std::vector<std::string> ids;
  for (const FindingInfo& known : catalogue()) {
    ids.push_back(opc::checks::idOf(known.id.number));
  }
  return ids;
}

const FindingInfo& findingNamed(std::string_view word) {
  constexpr std::string_view kPrefix = "kr";
  const std::string lower = opc::toLowerAscii(word);
  const std::string_view digits =
      std::string_view(lower).substr(lower.starts_with(kPrefix) ? kPrefix.size() : 0);
  std::uint16_t number = 0;
  const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  const bool isNumber = digits.size() == 3 && read.ptr == digits.data() + digits.size();
  const FindingInfo* info = isNumber ? findInfo(number) : nullptr;
  if (info != nullptr) return *info;

  const std::vector<std::string> ids = findingIds();
  const std::vector<std::string_view> names(ids.begin(), ids.end());
  throw opc::Exception(
      opc::ErrorCode::InvalidArgument,
      fmt::format("unknown finding '{}': {}", word,
                  text::suggestion(word, names, "'kraddon help findings' lists the findings")));
}

void RuleLists::append(const RuleLists& others) {
  ignore.insert(ignore.end(), others.ignore.begin(), others.ignore.end());
  error.insert(error.end(), others.error.begin(), others.error.end());
  warn.insert(warn.end(), others.warn.begin(), others.warn.end());
}

FindingRules::FindingRules(const RuleLists& lists, const std::vector<FindingId>& errors) {
  add(lists.ignore, std::nullopt);
  add(lists.error, Severity::Error);
  add(lists.warn, Severity::Warning);
  for (const FindingId id : errors) rules_.push_back({id, std::nullopt, Severity::Error});
}

void FindingRules::add(const std::vector<std::string>& rules, Outcome outcome) {
  for (const std::string& rule : rules) {
    const std::size_t colon = rule.find(':');
    const FindingId id = findingNamed(rule.substr(0, colon)).id;
    if (colon + 1 == rule.size()) {
      throw opc::Exception(opc::ErrorCode::InvalidArgument,
                           fmt::format("bad rule '{}': expected a pattern after the colon", rule));
    }
    Rule& added = rules_.emplace_back(Rule{id, std::nullopt, outcome});
    if (colon != std::string::npos) added.pattern.emplace(rule.substr(colon + 1));
  }
}

bool FindingRules::Rule::appliesTo(const Finding& finding) const {
  constexpr std::string_view kFiles = "files/";
  if (id.number != finding.id.number) return false;
  if (!pattern) return true;
  std::string_view path = finding.part;
  if (path.starts_with('/')) path.remove_prefix(1);
  return matchesPathOrFolder(*pattern, path) ||
         (path.starts_with(kFiles) && matchesPathOrFolder(*pattern, path.substr(kFiles.size())));
}

std::optional<Severity> FindingRules::severityOf(const Finding& finding) const {
  const auto rule = std::find_if(rules_.begin(), rules_.end(),
                                 [&](const Rule& one) { return one.appliesTo(finding); });
  return rule == rules_.end() ? finding.id.severity : rule->outcome;
}

std::optional<Severity> FindingRules::severityOf(FindingId id) const {
  const auto rule = std::find_if(rules_.begin(), rules_.end(), [id](const Rule& one) {
    return one.id.number == id.number && !one.pattern;
  });
  return rule == rules_.end() ? id.severity : rule->outcome;
}

}  // namespace addon::checks
