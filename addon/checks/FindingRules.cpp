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
  throw opc::Exception(opc::ErrorCode::InvalidArgument,
                       fmt::format("unknown finding '{}': {}", word,
                                   text::suggestion(word, names, "finding ids look like KR101")));
}

IgnoreRules::IgnoreRules(const std::vector<std::string>& rules) {
  for (const std::string& rule : rules) {
    const std::size_t colon = rule.find(':');
    const FindingId id = findingNamed(rule.substr(0, colon)).id;
    if (colon + 1 == rule.size()) {
      throw opc::Exception(opc::ErrorCode::InvalidArgument,
                           fmt::format("bad rule '{}': expected a pattern after the colon", rule));
    }
    Rule& added = rules_.emplace_back(Rule{id, std::nullopt});
    if (colon != std::string::npos) added.pattern.emplace(rule.substr(colon + 1));
  }
}

bool IgnoreRules::ignores(FindingId id) const {
  return std::any_of(rules_.begin(), rules_.end(), [id](const Rule& rule) {
    return rule.id.number == id.number && !rule.pattern;
  });
}

bool IgnoreRules::ignores(const Finding& finding) const {
  constexpr std::string_view kFiles = "files/";
  std::string_view path = finding.part;
  if (path.starts_with('/')) path.remove_prefix(1);
  const bool isFile = path.starts_with(kFiles);
  return std::any_of(rules_.begin(), rules_.end(), [&](const Rule& rule) {
    if (rule.id.number != finding.id.number) return false;
    if (!rule.pattern) return true;
    return matchesPathOrFolder(*rule.pattern, path) ||
           (isFile && matchesPathOrFolder(*rule.pattern, path.substr(kFiles.size())));
  });
}

}  // namespace addon::checks
