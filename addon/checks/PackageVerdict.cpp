// SPDX-License-Identifier: MIT
#include "addon/checks/PackageVerdict.h"

#include <optional>
#include <utility>

namespace addon::checks {

using opc::checks::Finding;
using opc::checks::FindingId;
using opc::checks::Report;
using opc::checks::Severity;

namespace {

/// Counts findings of a severity; nothing: they are ignored.
void count(PackageVerdict& verdict, std::optional<Severity> severity, std::size_t number) {
  if (!severity) {
    verdict.ignored += number;
  } else if (*severity == Severity::Warning) {
    verdict.warnings += number;
  } else {
    verdict.errors += number;
  }
}

}  // namespace

PackageVerdict judge(std::string file, const Report& report, const FindingRules& rules) {
  PackageVerdict verdict;
  verdict.file = std::move(file);
  std::map<FindingId, std::size_t> kept;
  for (const Finding& finding : report.findings()) {
    ++kept[finding.id];
    const std::optional<Severity> severity = rules.severityOf(finding);
    count(verdict, severity, 1);
    if (severity) verdict.findings.emplace_back(finding).id.severity = *severity;
  }
  for (const auto& [id, number] : kept) {
    const std::size_t others = report.count(id) - number;
    if (others == 0) continue;
    const std::optional<Severity> severity = rules.severityOf(id);
    count(verdict, severity, others);
    if (severity) verdict.unlisted[{id.number, *severity}] += others;
  }
  return verdict;
}

}  // namespace addon::checks
