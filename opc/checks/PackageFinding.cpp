// SPDX-License-Identifier: MIT
#include "opc/checks/PackageFinding.h"

#include <algorithm>
#include <string>

#include "opc/Text.h"
#include "opc/checks/PackageFindings.h"

namespace opc::checks {
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

struct RuleFinding {
  std::string_view rule;
  FindingId id;
};

constexpr RuleFinding kRules[] = {
    {"CT-1", kBadContentTypes},     {"CT-4", kBadContentTypeEntry},
    {"CT-5", kBadContentTypeEntry}, {"CT-6", kDuplicateContentType},
    {"CT-7", kBadContentTypeEntry}, {"CT-8", kBadContentTypeEntry},
    {"CT-10", kRelatedWithoutType}, {"CP-1", kSeveralCoreRelationships},
    {"CT-12", kBadRelationships},   {"IL-3", kClashingPieces},
    {"PN-8", kEquivalentNames},     {"PN-9", kNameExtendsName},
    {"RL-4", kBadRelationshipId},   {"RL-9", kRelatedRelationships},
    {"XM-1", kDoctypeOrEncoding},   {"XM-2", kDoctypeOrEncoding},
};

}  // namespace

void addFinding(Report& report, FindingId id, std::string_view part, std::string_view message,
                std::string_view rule, std::size_t line) {
  // Beyond those that are kept, findings are counted only.
  if (!report.keeps(id)) return report.add(id, "", "");
  report.add(id, cut(part, kLongestPart), cut(message, kLongestMessage), line, std::string(rule));
}

FindingId findingOfRule(std::string_view rule, FindingId otherwise) {
  const auto* found = std::find_if(std::begin(kRules), std::end(kRules),
                                   [&](const RuleFinding& entry) { return entry.rule == rule; });
  return found == std::end(kRules) ? otherwise : found->id;
}

}  // namespace opc::checks
