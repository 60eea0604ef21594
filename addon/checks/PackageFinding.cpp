// SPDX-License-Identifier: MIT
#include "addon/checks/PackageFinding.h"

#include <algorithm>
#include <string>

#include "opc/Text.h"

namespace addon::checks {
namespace {

constexpr std::size_t kLongestPart = 1024;     // bytes
constexpr std::size_t kLongestMessage = 2048;  // bytes

bool isContinuation(char c) {
  return (static_cast<unsigned char>(c) & 0xC0u) == 0x80;
}

std::string cut(std::string_view text, std::size_t most) {
  std::size_t end = std::min(text.size(), most);
  if (end < text.size()) {
    while (end > 0 && isContinuation(text[end])) --end;
  }
  std::string result(text.substr(0, end));
  if (!opc::isUtf8(result)) result = opc::printable(result);
  if (end < text.size()) result += "...";
  return result;
}

struct RuleNumber {
  std::string_view rule;
  std::uint16_t number;
};

constexpr RuleNumber kNumbers[] = {
    {"CT-1", 201},  {"CT-4", 206}, {"CT-5", 206},  {"CT-6", 204}, {"CT-7", 206}, {"CT-8", 206},
    {"CT-10", 202}, {"CP-1", 212}, {"CT-12", 208}, {"IL-3", 219}, {"PN-8", 205}, {"PN-9", 207},
    {"RL-4", 209},  {"RL-9", 218}, {"XM-1", 214},  {"XM-2", 214},
};

}  // namespace

void addFinding(Report& report, std::uint16_t number, std::string_view part,
                std::string_view message, std::string_view rule, std::size_t line) {
  // Beyond those that are kept, findings are counted only.
  if (report.count(number) >= Report::kMostKept) return report.add({number, "", "", "", 0});
  report.add(
      {number, cut(part, kLongestPart), cut(message, kLongestMessage), std::string(rule), line});
}

std::uint16_t numberOfRule(std::string_view rule, std::uint16_t otherwise) {
  const auto* found = std::find_if(std::begin(kNumbers), std::end(kNumbers),
                                   [&](const RuleNumber& entry) { return entry.rule == rule; });
  return found == std::end(kNumbers) ? otherwise : found->number;
}

}  // namespace addon::checks
