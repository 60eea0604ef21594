// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

#include "opc/Text.h"

namespace opc::model {

/// RFC 3986: what never needs an escape.
constexpr bool isUnreserved(char c) {
  return isAsciiLetterOrDigit(c) || c == '-' || c == '.' || c == '_' || c == '~';
}

/// RFC 3986: what a path segment may hold as it is, of ASCII.
constexpr bool isPathCharacter(char c) {
  constexpr std::string_view kOthers = "!$&'()*+,;=:@";
  return isUnreserved(c) || kOthers.find(c) != std::string_view::npos;
}

/// RFC 3987, ucschar: of what is not ASCII no C1 controls, surrogates, private use or
/// noncharacters.
constexpr bool isIriCharacter(char32_t c) {
  if (c < 0x10000) {
    return (c >= 0xA0 && c <= 0xD7FF) || (c >= 0xF900 && c <= 0xFDCF) ||
           (c >= 0xFDF0 && c <= 0xFFEF);
  }
  return (c & 0xFFFF) <= 0xFFFD && c <= 0xEFFFD && !(c >= 0xE0000 && c < 0xE1000);
}

/// RFC 3987, iprivate: what only a query may hold.
constexpr bool isIriPrivate(char32_t c) {
  return (c >= 0xE000 && c <= 0xF8FF) || (c >= 0xF0000 && (c & 0xFFFF) <= 0xFFFD);
}

/// The value of a hexadecimal digit, or -1.
constexpr int hexadecimalValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

/// The byte that two hexadecimal digits stand for, or -1 when they are none.
constexpr int octetValue(char high, char low) {
  const int h = hexadecimalValue(high);
  const int l = hexadecimalValue(low);
  return h < 0 || l < 0 ? -1 : h * 16 + l;
}

/// Appends "%C3" for the byte C3.
inline void appendPercentEncoded(std::string& out, char byte) {
  constexpr const char* kDigits = "0123456789ABCDEF";
  const auto value = static_cast<unsigned char>(byte);
  out += '%';
  out += kDigits[value >> 4];
  out += kDigits[value & 15];
}

}  // namespace opc::model
