// SPDX-License-Identifier: MIT
#include "tool/PackageVerdict.h"

#include <utility>

#include "addon/checks/Catalogue.h"

namespace tool {

using addon::checks::Finding;
using addon::checks::FindingInfo;
using addon::checks::Report;
using addon::checks::Severity;

PackageVerdict judge(std::string file, const Report& report, const IgnoreRules& rules) {
  PackageVerdict verdict;
  verdict.file = std::move(file);
  std::map<std::uint16_t, std::size_t> kept;
  std::map<std::uint16_t, std::size_t> dropped;
  for (const Finding& finding : report.findings()) {
    ++kept[finding.number];
    if (rules.ignores(finding)) {
      ++dropped[finding.number];
    } else {
      verdict.findings.push_back(finding);
    }
  }
  for (const auto& [number, count] : kept) {
    const std::size_t all = report.count(number);
    const std::size_t ignored = rules.ignores(number) ? all : dropped[number];
    verdict.ignored += ignored;
    if (all > count && ignored < all) verdict.unlisted[number] = all - count;
    const FindingInfo* info = addon::checks::findInfo(number);
    const bool isWarning = info != nullptr && info->severity == Severity::Warning;
    (isWarning ? verdict.warnings : verdict.errors) += all - ignored;
  }
  return verdict;
}

}  // namespace tool
