// SPDX-License-Identifier: MIT
#include "opc/model/XmlEncoding.h"

#include <algorithm>

#include "opc/Text.h"
#include "opc/model/InvalidXMLDocument.h"

namespace opc::model {
namespace {

constexpr const char* kRule = "XM-1";
constexpr std::uint32_t kNoCodePoint = 0xFFFFFFFF;
constexpr std::string_view kMark = "\xEF\xBB\xBF";  // of UTF-8

using namespace std::string_view_literals;

[[noreturn]] void fail(const std::string& why) {
  const TextPosition start;
  throw InvalidXMLDocument(why, start.line, start.column, kRule);
}

[[noreturn]] void failAt(const std::string& why, std::string_view text, std::size_t offset) {
  const TextPosition place = positionAt(text, offset);
  throw InvalidXMLDocument(why, place.line, place.column, kRule);
}

void refuseOtherEncodings(std::string_view bytes) {
  for (const std::string_view start :
       {"\xFF\xFE\0\0"sv, "\0\0\xFE\xFF"sv, "<\0\0\0"sv, "\0\0\0<"sv}) {
    if (bytes.starts_with(start)) fail("the document is in UTF-32, not in UTF-8 or UTF-16");
  }
  if (bytes.starts_with("\0<"sv) || bytes.starts_with("<\0"sv)) {
    fail("the document is in UTF-16 without a byte order mark");
  }
}

void appendUtf8(std::string& out, std::uint32_t point) {
  const auto tail = [&](unsigned shift) {
    out += static_cast<char>(0x80u | ((point >> shift) & 0x3Fu));
  };
  if (point < 0x80) {
    out += static_cast<char>(point);
  } else if (point < 0x800) {
    out += static_cast<char>(0xC0u | (point >> 6));
    tail(0);
  } else if (point < 0x10000) {
    out += static_cast<char>(0xE0u | (point >> 12));
    tail(6);
    tail(0);
  } else {
    out += static_cast<char>(0xF0u | (point >> 18));
    tail(12);
    tail(6);
    tail(0);
  }
}

// Hands out the code points of UTF-16.
class Utf16Reader {
 public:
  Utf16Reader(std::string_view bytes, bool bigEndian) : bytes_(bytes), bigEndian_(bigEndian) {}

  bool atEnd() const { return at_ >= bytes_.size(); }

  // kNoCodePoint for half a code unit and for a surrogate without its partner.
  std::uint32_t next() {
    const std::uint32_t unit = nextUnit();
    if (unit == kNoCodePoint || unit < 0xD800 || unit > 0xDFFF) return unit;
    if (unit > 0xDBFF) return kNoCodePoint;
    const std::uint32_t low = nextUnit();
    if (low < 0xDC00 || low > 0xDFFF) return kNoCodePoint;
    return 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
  }

 private:
  std::uint32_t nextUnit() {
    if (bytes_.size() - std::min(at_, bytes_.size()) < 2) return kNoCodePoint;
    const std::uint32_t first = static_cast<unsigned char>(bytes_[at_]);
    const std::uint32_t second = static_cast<unsigned char>(bytes_[at_ + 1]);
    at_ += 2;
    return bigEndian_ ? first << 8 | second : second << 8 | first;
  }

  std::string_view bytes_;
  std::size_t at_ = 0;
  bool bigEndian_;
};

std::string toUpperAscii(std::u16string_view text) {
  std::string result = toASCIIString(text);
  std::transform(result.begin(), result.end(), result.begin(), [](char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  });
  return result;
}

}  // namespace

TextPosition positionAt(std::string_view text, std::size_t offset) noexcept {
  TextPosition place;
  for (std::size_t at = 0; at < std::min(offset, text.size()); ++at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    const bool lineFeedAhead = at + 1 < text.size() && text[at + 1] == '\n';
    if (byte == '\n' || (byte == '\r' && !lineFeedAhead)) {
      ++place.line;
      place.column = 1;
    } else if (byte >= 0xF0) {
      place.column += 2;
    } else if (!isUtf8Continuation(text[at])) {
      ++place.column;
    }
  }
  return place;
}

XmlText::XmlText(std::string_view bytes) : text_(bytes) {
  refuseOtherEncodings(bytes);
  if (bytes.starts_with("\xFF\xFE")) {
    convertUtf16(bytes.substr(2), false);
  } else if (bytes.starts_with("\xFE\xFF")) {
    convertUtf16(bytes.substr(2), true);
  } else {
    if (bytes.starts_with(kMark)) text_.remove_prefix(kMark.size());
    const std::size_t fault = findUtf8Fault(text_);
    if (fault != std::string_view::npos) failAt("the bytes are not UTF-8", text_, fault);
  }
  // The parser would take away another one.
  if (text_.starts_with(kMark)) {
    throw InvalidXMLDocument("a second byte order mark stands in front", 1, 1, "XM-3");
  }
}

void XmlText::convertUtf16(std::string_view bytes, bool bigEndian) {
  encoding_ = "UTF-16";
  converted_.reserve(bytes.size() / 2);
  Utf16Reader reader(bytes, bigEndian);
  while (!reader.atEnd()) {
    const std::uint32_t point = reader.next();
    if (point == kNoCodePoint) failAt("the bytes are not UTF-16", converted_, converted_.size());
    appendUtf8(converted_, point);
  }
  text_ = converted_;
}

void XmlText::checkDeclaration(std::u16string_view encoding) const {
  if (encoding.empty()) return;
  const std::string name = toUpperAscii(encoding);
  if (name != "UTF-8" && name != "UTF-16") {
    fail("encoding '" + toUtf8ForDisplay(encoding) + "' is declared, not UTF-8 or UTF-16");
  }
  if (name != encoding_) fail("encoding " + name + " is declared, the bytes are " + encoding_);
}

}  // namespace opc::model
