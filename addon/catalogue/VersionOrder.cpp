// SPDX-License-Identifier: MIT
#include "addon/catalogue/VersionOrder.h"

#include <algorithm>

#include "opc/Text.h"

namespace addon::catalogue {

namespace {

/// Takes the next run of digits, or of anything else, from the front.
std::string_view takeRun(std::string_view& text) noexcept {
  const bool isNumber = opc::isAsciiDigit(text.front());
  const auto* const end = std::find_if(text.begin(), text.end(),
                                       [&](char c) { return opc::isAsciiDigit(c) != isNumber; });
  const auto size = static_cast<std::size_t>(end - text.begin());
  const std::string_view run = text.substr(0, size);
  text.remove_prefix(size);
  return run;
}

int compareNumbers(std::string_view a, std::string_view b) noexcept {
  a.remove_prefix(std::min(a.find_first_not_of('0'), a.size()));
  b.remove_prefix(std::min(b.find_first_not_of('0'), b.size()));
  if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
  return a.compare(b);
}

int compareRuns(std::string_view a, std::string_view b) noexcept {
  const bool areNumbers = opc::isAsciiDigit(a.front()) && opc::isAsciiDigit(b.front());
  return areNumbers ? compareNumbers(a, b) : a.compare(b);
}

}  // namespace

int compareVersions(std::string_view a, std::string_view b) noexcept {
  const std::string_view wholeA = a;
  const std::string_view wholeB = b;
  while (!a.empty() && !b.empty()) {
    const std::string_view runA = takeRun(a);
    const std::string_view runB = takeRun(b);
    if (const int order = compareRuns(runA, runB); order != 0) return order;
  }
  if (a.empty() != b.empty()) return a.empty() ? -1 : 1;
  return wholeA.compare(wholeB);  // 1.0 and 1.00
}

}  // namespace addon::catalogue
