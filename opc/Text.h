// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace opc {

/// UTF-16 from an ASCII literal.
std::u16string toStringFromASCIIStringLiteral(const char* literal);

/// The text with '?' for every code unit that is not ASCII.
std::string toASCIIString(std::u16string_view text);

/// Strict conversions. They throw ErrorCode::InvalidText for a lone surrogate and for bytes that
/// are not UTF-8 (overlong forms and encoded surrogates included), and ErrorCode::TooLarge for more
/// than 715 million code units or bytes.
std::string toUtf8(std::u16string_view text);
std::u16string fromUtf8(std::string_view bytes);

/// Whether `bytes` is well-formed UTF-8.
bool isUtf8(std::string_view bytes) noexcept;
/// Whether the byte is a continuation byte of UTF-8: not the first byte of a character.
constexpr bool isUtf8Continuation(char byte) noexcept {
  return (static_cast<unsigned char>(byte) & 0xC0u) == 0x80;
}
/// The longest prefix of at most that many bytes that does not split a character of UTF-8. Text
/// that is not UTF-8 may be cut anywhere.
std::string_view clipUtf8(std::string_view text, std::size_t most) noexcept;
/// The offset of the first sequence that is not UTF-8; npos if there is none.
std::size_t findUtf8Fault(std::string_view bytes) noexcept;

/// For messages: converts lone surrogates to U+FFFD. Throws only std::bad_alloc, and
/// ErrorCode::TooLarge as toUtf8() does.
std::string toUtf8ForDisplay(std::u16string_view text);

/// For messages and terminals: escapes control characters (C0, DEL, C1), characters that are
/// invisible, end a line or change the direction of text, and bytes that are not UTF-8, as in `\n`,
/// `\x1b` and `\u202e`. Everything else stays, the backslash included.
std::string printable(std::string_view bytes);

/// Compares two UTF-8 texts by their UTF-16 code units, the order of the file tree. Returns a
/// negative number, zero or a positive number. The order differs from that of the bytes only
/// between U+E000..U+FFFF and the characters above U+FFFF.
int compareByCodeUnits(std::string_view a, std::string_view b) noexcept;

/// ASCII letters to lower case, everything else unchanged.
constexpr char toLowerAscii(char c) noexcept {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}
std::string toLowerAscii(std::string_view text);

constexpr bool isAsciiDigit(char c) noexcept {
  return c >= '0' && c <= '9';
}
constexpr bool isAsciiLetter(char c) noexcept {
  return toLowerAscii(c) >= 'a' && toLowerAscii(c) <= 'z';
}
constexpr bool isAsciiLetterOrDigit(char c) noexcept {
  return isAsciiLetter(c) || isAsciiDigit(c);
}
constexpr bool isAscii(std::string_view text) noexcept {
  for (const char c : text) {
    if (static_cast<unsigned char>(c) >= 0x80) return false;
  }
  return true;
}
/// A space, tab, line feed, vertical tab, form feed or carriage return.
constexpr bool isAsciiSpace(char c) noexcept {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

}  // namespace opc
