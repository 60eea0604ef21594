// SPDX-License-Identifier: MIT
#include "addon/checks/PackageVerdict.h"

#include <utility>

namespace addon::checks {

using opc::checks::Finding;
using opc::checks::FindingId;
using opc::checks::Report;
using opc::checks::Severity;

PackageVerdict judge(std::string file, const Report& report, const IgnoreRules& rules) {
  PackageVerdict verdict;
  verdict.file = std::move(file);
  std::map<FindingId, std::size_t> kept;
  std::map<FindingId, std::size_t> dropped;
  for (const Finding& finding : report.findings()) {
    ++kept[finding.id];
    if (rules.ignores(finding)) {
      ++dropped[finding.id];
    } else {
      verdict.findings.push_back(finding);
    }
  }
  for (const auto& [id, count] : kept) {
    const std::size_t all = report.count(id);
    const std::size_t ignored = rules.ignores(id) ? all : dropped[id];
    verdict.ignored += ignored;
    if (all > count && ignored < all) verdict.unlisted[id] = all - count;
    const bool isWarning = id.severity == Severity::Warning;
    (isWarning ? verdict.warnings : verdict.errors) += all - ignored;
  }
  return verdict;
}

}  // namespace addon::checks
