// SPDX-License-Identifier: MIT
#include "opc/checks/Finding.h"

#include "opc/Text.h"

namespace opc::checks {
namespace {

constexpr std::size_t kMaxQuotedLength = 200;  // bytes

}  // namespace

std::string idOf(std::uint16_t number) {
  return "KR" + std::to_string(number);
}

std::string_view nameOf(Severity severity) {
  return severity == Severity::Error ? "error" : "warning";
}

std::string quoted(std::string_view text) {
  const std::string_view shown = clipUtf8(text, kMaxQuotedLength);
  return "'" + printable(shown) + (shown.size() < text.size() ? "...'" : "'");
}

std::string quoted(std::u16string_view text) {
  // A code unit takes at least one byte, so this drops nothing that would be shown.
  return quoted(toUtf8ForDisplay(text.substr(0, kMaxQuotedLength + 1)));
}

}  // namespace opc::checks
