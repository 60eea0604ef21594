// SPDX-License-Identifier: MIT
#include "opc/checks/Report.h"

#include <utility>

namespace opc::checks {

std::string idOf(std::uint16_t number) {
  return "KR" + std::to_string(number);
}

std::string_view nameOf(Severity severity) {
  return severity == Severity::Error ? "error" : "warning";
}

void Report::add(FindingId id, std::string part, std::string message, std::size_t line,
                 std::string rule) {
  ++(id.severity == Severity::Warning ? warnings_ : errors_);
  if (++counts_[id.number] > kMostKept) return;
  findings_.push_back({id, std::move(part), std::move(message), line, std::move(rule)});
}

std::size_t Report::count(std::uint16_t number) const {
  const auto found = counts_.find(number);
  return found == counts_.end() ? 0 : found->second;
}

}  // namespace opc::checks
