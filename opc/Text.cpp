// SPDX-License-Identifier: MIT
#include "opc/Text.h"

#include <unicode/ustring.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cstdint>
#include <limits>

#include "opc/Exception.h"
#include "opc/Words.h"

namespace opc {
namespace {

// ICU counts in int32_t.
std::int32_t icuLength(std::size_t size) {
  if (size > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max() / 3)) {
    throw Exception(ErrorCode::TooLarge, "text is too long to convert");
  }
  return static_cast<std::int32_t>(size);
}

// The code point at `at`, which moves past it; negative for bytes that are not UTF-8.
std::int32_t nextCodePoint(std::string_view bytes, std::size_t& at) {
  std::int32_t index = 0;
  const std::size_t left = std::min<std::size_t>(bytes.size() - at, 4);
  const auto* source = reinterpret_cast<const std::uint8_t*>(bytes.data() + at);
  UChar32 point = 0;
  U8_NEXT(source, index, static_cast<std::int32_t>(left), point);
  at += static_cast<std::size_t>(index);
  return point;
}

// The first byte from `at` that is not ASCII, or the end. Most text is ASCII: eight at a time.
std::size_t skipAscii(std::string_view bytes, std::size_t at) noexcept {
  constexpr std::uint64_t kHighBits = 0x8080808080808080u;
  while (bytes.size() - at >= 8) {
    if ((loadWord(bytes.data() + at) & kHighBits) != 0) break;
    at += 8;
  }
  while (at < bytes.size() && static_cast<unsigned char>(bytes[at]) < 0x80) ++at;
  return at;
}

// The beginning of a text, for messages: a faulty text may be a whole document.
template <typename View>
View beginningOf(View text) {
  constexpr std::size_t kShown = 200;
  return text.substr(0, kShown);
}

void appendHexDigits(std::string& out, unsigned value, int count) {
  constexpr const char* kDigits = "0123456789abcdef";
  while (count-- > 0) out += kDigits[(value >> (4 * count)) & 15u];
}

void appendHexEscape(std::string& out, unsigned value) {
  out += "\\x";
  appendHexDigits(out, value, 2);
}

void appendUnicodeEscape(std::string& out, unsigned value) {
  out += "\\u";
  constexpr unsigned kLastOfFourDigits = 0xFFFF;
  if (value <= kLastOfFourDigits) return appendHexDigits(out, value, 4);
  out.back() = 'U';
  appendHexDigits(out, value, 8);
}

void appendControl(std::string& out, std::int32_t point) {
  switch (point) {
    case '\n':
      out += "\\n";
      break;
    case '\r':
      out += "\\r";
      break;
    case '\t':
      out += "\\t";
      break;
    default:
      if (point < 0x100) return appendHexEscape(out, static_cast<unsigned>(point));
      appendUnicodeEscape(out, static_cast<unsigned>(point));
  }
}

// What turns the direction of text, ends a line or cannot be seen makes a name look like another
// one.
bool isDeceptive(std::int32_t point) {
  return point == 0x00AD || point == 0x061C || (point >= 0x200B && point <= 0x200F) ||
         (point >= 0x2028 && point <= 0x202E) || point == 0x2060 ||
         (point >= 0x2066 && point <= 0x2069) || point == 0xFEFF ||
         (point >= 0xE0000 && point <= 0xE007F);
}

bool isControl(std::int32_t point) {
  return point < 0x20 || (point >= 0x7F && point < 0xA0) || isDeceptive(point);
}

}  // namespace

std::u16string toStringFromASCIIStringLiteral(const char* literal) {
  const std::string_view text(literal);
  return {text.begin(), text.end()};
}

std::string toASCIIString(std::u16string_view text) {
  std::string result(text.size(), '?');
  std::transform(text.begin(), text.end(), result.begin(),
                 [](char16_t unit) { return unit < 0x80 ? static_cast<char>(unit) : '?'; });
  return result;
}

std::string toUtf8(std::u16string_view text) {
  std::string result(text.size() * 3, '\0');
  UErrorCode status = U_ZERO_ERROR;
  std::int32_t length = 0;
  u_strToUTF8(result.data(), icuLength(text.size()) * 3, &length, text.data(),
              static_cast<std::int32_t>(text.size()), &status);
  if (U_FAILURE(status)) {
    throw Exception(ErrorCode::InvalidText, "cannot convert text '" +
                                                toUtf8ForDisplay(beginningOf(text)) +
                                                "': a surrogate stands alone");
  }
  result.resize(static_cast<std::size_t>(length));
  return result;
}

std::u16string fromUtf8(std::string_view bytes) {
  std::u16string result(bytes.size(), u'\0');
  UErrorCode status = U_ZERO_ERROR;
  std::int32_t length = 0;
  u_strFromUTF8(result.data(), icuLength(bytes.size()), &length, bytes.data(),
                static_cast<std::int32_t>(bytes.size()), &status);
  if (U_FAILURE(status)) {
    throw Exception(ErrorCode::InvalidText,
                    "cannot convert text '" + printable(beginningOf(bytes)) + "': it is not UTF-8");
  }
  result.resize(static_cast<std::size_t>(length));
  return result;
}

bool isUtf8(std::string_view bytes) noexcept {
  return findUtf8Fault(bytes) == std::string_view::npos;
}

std::size_t findUtf8Fault(std::string_view bytes) noexcept {
  std::size_t at = skipAscii(bytes, 0);
  while (at < bytes.size()) {
    const std::size_t start = at;
    if (nextCodePoint(bytes, at) < 0) return start;
    at = skipAscii(bytes, at);
  }
  return std::string_view::npos;
}

std::string_view clipUtf8(std::string_view text, std::size_t most) noexcept {
  if (text.size() <= most) return text;
  std::size_t end = most;
  while (end > 0 && isUtf8Continuation(text[end])) --end;
  constexpr std::size_t kMaxContinuations = 3;
  return text.substr(0, most - end > kMaxContinuations ? most : end);  // not UTF-8 is cut anywhere
}

std::string toUtf8ForDisplay(std::u16string_view text) {
  std::string result(text.size() * 3, '\0');
  UErrorCode status = U_ZERO_ERROR;
  std::int32_t length = 0;
  u_strToUTF8WithSub(result.data(), icuLength(text.size()) * 3, &length, text.data(),
                     static_cast<std::int32_t>(text.size()), 0xFFFD, nullptr, &status);
  result.resize(static_cast<std::size_t>(std::max(length, 0)));
  return result;
}

std::string printable(std::string_view bytes) {
  std::string result;
  result.reserve(bytes.size());
  for (std::size_t at = 0; at < bytes.size();) {
    const std::size_t start = at;
    const std::int32_t point = nextCodePoint(bytes, at);
    if (point < 0) {
      appendHexEscape(result, static_cast<unsigned char>(bytes[start]));
      at = start + 1;
    } else if (isControl(point)) {
      appendControl(result, point);
    } else {
      result.append(bytes, start, at - start);
    }
  }
  return result;
}

int compareByCodeUnits(std::string_view a, std::string_view b) noexcept {
  const std::size_t common = std::min(a.size(), b.size());
  std::size_t at = 0;
  while (at < common && a[at] == b[at]) ++at;
  if (at == common) return a.size() < b.size() ? -1 : a.size() > b.size() ? 1 : 0;
  const auto x = static_cast<unsigned char>(a[at]);
  const auto y = static_cast<unsigned char>(b[at]);
  // Lead bytes F0..F4 begin surrogate pairs (D800..DBFF), EE and EF begin U+E000..U+FFFF: in UTF-16
  // the former come first, in bytes the latter.
  if (x >= 0xEE && y >= 0xEE && (x >= 0xF0) != (y >= 0xF0)) {
    return x >= 0xF0 ? -1 : 1;
  }
  return x < y ? -1 : 1;
}

std::string toLowerAscii(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(),
                 [](char c) { return toLowerAscii(c); });
  return result;
}

}  // namespace opc
