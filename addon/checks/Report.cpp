// SPDX-License-Identifier: MIT
#include "addon/checks/Report.h"

#include <utility>

namespace addon::checks {

void Report::add(Finding finding) {
  const FindingInfo* info = findInfo(finding.number);
  ++(info != nullptr && info->severity == Severity::Warning ? warnings_ : errors_);
  if (++counts_[finding.number] <= kMostKept) findings_.push_back(std::move(finding));
}

std::size_t Report::count(std::uint16_t number) const {
  const auto found = counts_.find(number);
  return found == counts_.end() ? 0 : found->second;
}

}  // namespace addon::checks
