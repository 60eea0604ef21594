// SPDX-License-Identifier: MIT
#include "opc/checks/Finding.h"

#include "opc/Text.h"

namespace opc::checks {
namespace {

constexpr std::size_t kLongestQuoted = 200;  // bytes

bool isContinuation(char c) {
  return (static_cast<unsigned char>(c) & 0xC0u) == 0x80;
}

}  // namespace

std::string idOf(std::uint16_t number) {
  return "KR" + std::to_string(number);
}

std::string_view nameOf(Severity severity) {
  return severity == Severity::Error ? "error" : "warning";
}

std::string_view clip(std::string_view text, std::size_t most) {
  if (text.size() <= most) return text;
  while (most > 0 && isContinuation(text[most])) --most;
  return text.substr(0, most);
}

std::string quoted(std::string_view text) {
  const std::string_view shown = clip(text, kLongestQuoted);
  return "'" + printable(shown) + (shown.size() < text.size() ? "...'" : "'");
}

std::string quoted(std::u16string_view text) {
  // A code unit takes at least one byte, so this drops nothing that would be shown.
  return quoted(toUtf8ForDisplay(text.substr(0, kLongestQuoted + 1)));
}

}  // namespace opc::checks
