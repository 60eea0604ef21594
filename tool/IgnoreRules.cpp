// SPDX-License-Identifier: MIT
#include "tool/IgnoreRules.h"

#include <algorithm>

#include "addon/checks/Catalogue.h"
#include "opc/Text.h"
#include "text/Suggest.h"
#include "tool/line/Arguments.h"
#include "tool/process/Errors.h"

namespace tool {

namespace {

using opc::checks::Finding;
using opc::checks::FindingId;
using opc::checks::FindingInfo;

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
  for (const FindingInfo& known : addon::checks::catalogue()) {
    ids.push_back(opc::checks::idOf(known.id.number));
  }
  return ids;
}

const FindingInfo& findingNamed(std::string_view word) {
  constexpr std::string_view kPrefix = "kr";
  const std::string lower = opc::toLowerAscii(word);
  const std::string_view digits =
      std::string_view(lower).substr(lower.starts_with(kPrefix) ? kPrefix.size() : 0);
  const auto number = digits.size() == 3 ? line::toInteger(digits) : std::nullopt;
  const FindingInfo* info = number && *number > 0
                                ? addon::checks::findInfo(static_cast<std::uint16_t>(*number))
                                : nullptr;
  if (info != nullptr) return *info;

  const std::vector<std::string> ids = findingIds();
  const std::vector<std::string_view> names(ids.begin(), ids.end());
  throw process::UsageError(process::sentence(
      "unknown finding", word, text::suggestion(word, names, "finding ids look like KR101")));
}

IgnoreRules::IgnoreRules(const std::vector<std::string>& rules) {
  for (const std::string& rule : rules) {
    const std::size_t colon = rule.find(':');
    const FindingId id = findingNamed(rule.substr(0, colon)).id;
    if (colon + 1 == rule.size()) {
      throw process::UsageError(
          process::sentence("bad value of --ignore", rule, "expected a pattern after the colon"));
    }
    Rule& added = rules_.emplace_back(Rule{id, std::nullopt});
    if (colon != std::string::npos) added.pattern.emplace(rule.substr(colon + 1));
  }
}

bool IgnoreRules::ignores(FindingId id) const {
  return std::any_of(rules_.begin(), rules_.end(),
                     [id](const Rule& rule) { return rule.id == id && !rule.pattern; });
}

bool IgnoreRules::ignores(const Finding& finding) const {
  constexpr std::string_view kFiles = "files/";
  std::string_view path = finding.part;
  if (path.starts_with('/')) path.remove_prefix(1);
  const bool isFile = path.starts_with(kFiles);
  return std::any_of(rules_.begin(), rules_.end(), [&](const Rule& rule) {
    if (rule.id != finding.id) return false;
    if (!rule.pattern) return true;
    return matchesPathOrFolder(*rule.pattern, path) ||
           (isFile && matchesPathOrFolder(*rule.pattern, path.substr(kFiles.size())));
  });
}

}  // namespace tool
