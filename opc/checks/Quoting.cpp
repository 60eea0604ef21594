// SPDX-License-Identifier: MIT
#include "opc/checks/Quoting.h"

#include "opc/Text.h"

namespace opc::checks {
namespace {

constexpr std::size_t kLongest = 200;  // bytes

bool isContinuation(char c) {
  return (static_cast<unsigned char>(c) & 0xC0u) == 0x80;
}

}  // namespace

std::string quoted(std::string_view text) {
  if (text.size() <= kLongest) return "'" + opc::printable(text) + "'";
  std::size_t end = kLongest;
  while (end > 0 && isContinuation(text[end])) --end;
  return "'" + opc::printable(text.substr(0, end)) + "...'";
}

std::string quoted(std::u16string_view text) {
  // A code unit is at least a byte, so what is cut off here is cut off anyway.
  return quoted(opc::toUtf8ForDisplay(text.substr(0, kLongest + 1)));
}

}  // namespace opc::checks
