// SPDX-License-Identifier: MIT
#include "addon/gallery/detail/HtmlWriter.h"

#include <unicode/utf8.h>

#include <array>
#include <cstdint>
#include <utility>

#include "addon/gallery/detail/DataAddress.h"
#include "opc/Exception.h"
#include "text/Sha256.h"

namespace addon::gallery::detail {

namespace {

constexpr std::size_t kBufferSize = std::size_t{64} << 10;
constexpr std::string_view kRawStart = "\n";
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

/// The escape for a character; "" if it needs none.
constexpr std::string_view escapeOf(UChar32 point) {
  switch (point) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    case '\'':
      return "&#39;";
    default:
      return {};
  }
}

/// HTML cannot represent these, not even as references.
bool isUnwritable(UChar32 point) {
  const bool isControl =
      (point < 0x20 && point != '\t' && point != '\n') || (point >= 0x7F && point < 0xA0);
  return point < 0 || isControl || (point & 0xFFFE) == 0xFFFE ||
         (point >= 0xFDD0 && point <= 0xFDEF);
}

/// Which bytes are written as they are.
constexpr std::array<bool, 256> kPlain = [] {
  std::array<bool, 256> plain{};
  for (int byte = 0x20; byte < 0x7F; ++byte) {
    plain.at(static_cast<std::size_t>(byte)) = escapeOf(byte).empty();
  }
  return plain;
}();

/// The character at `at`, which moves past it; negative for bytes that are not UTF-8.
UChar32 nextPoint(std::string_view text, std::size_t& at) {
  const std::string_view window = text.substr(at, U8_MAX_LENGTH);
  std::int32_t index = 0;
  UChar32 point = 0;
  U8_NEXT(reinterpret_cast<const std::uint8_t*>(window.data()), index,
          static_cast<std::int32_t>(window.size()), point);
  at += static_cast<std::size_t>(index);
  return point;
}

}  // namespace

HtmlWriter::HtmlWriter(Sink sink) : sink_(std::move(sink)) {}

void HtmlWriter::doctype() {
  append("<!DOCTYPE html>\n");
}

void HtmlWriter::element(HtmlName name, Attributes attributes, std::string_view content) {
  element(name, attributes, [&] { text(content); });
}

void HtmlWriter::element(HtmlName name, std::string_view content) {
  element(name, {}, content);
}

void HtmlWriter::empty(HtmlName name, Attributes attributes) {
  startTag(name, attributes);
}

void HtmlWriter::text(std::string_view content) {
  appendEscaped(content);
}

void HtmlWriter::style(std::string_view sheet) {
  raw("style", sheet);
}

void HtmlWriter::script(std::string_view code) {
  raw("script", code);
}

void HtmlWriter::raw(HtmlName name, std::string_view content) {
  if (content.find("</") != std::string_view::npos ||
      content.find("<!--") != std::string_view::npos) {
    throw opc::Exception(opc::ErrorCode::InvalidArgument,
                         "cannot write " + std::string(name.text()) + ": it would end its element");
  }
  startTag(name, {});
  append(kRawStart);
  append(content);
  endTag(name);
  newLine();
}

void HtmlWriter::newLine() {
  append("\n");
}

void HtmlWriter::flush() {
  sink_(buffer_);
  buffer_.clear();
}

void HtmlWriter::startTag(HtmlName name, Attributes attributes) {
  append("<");
  append(name.text());
  for (const HtmlAttribute& attribute : attributes) {
    append(" ");
    append(attribute.name.text());
    append("=\"");
    appendEscaped(attribute.value);
    append("\"");
  }
  append(">");
}

void HtmlWriter::endTag(HtmlName name) {
  append("</");
  append(name.text());
  append(">");
}

void HtmlWriter::append(std::string_view markup) {
  buffer_ += markup;
  if (buffer_.size() >= kBufferSize) flush();
}

void HtmlWriter::appendEscaped(std::string_view content) {
  std::size_t at = 0;
  while (at < content.size()) {
    std::size_t start = at;
    while (at < content.size() && kPlain[static_cast<unsigned char>(content[at])]) ++at;
    append(content.substr(start, at - start));
    if (at == content.size()) return;
    start = at;
    const UChar32 point = nextPoint(content, at);
    if (point == '\r') {
      if (at == content.size() || content[at] != '\n') append("\n");
    } else if (isUnwritable(point)) {
      append(kReplacement);
    } else {
      const std::string_view escape = escapeOf(point);
      append(escape.empty() ? content.substr(start, at - start) : escape);
    }
  }
}

std::string policyHash(std::string_view content) {
  text::Sha256 hash;
  hash.update(kRawStart);
  hash.update(content);
  return "'sha256-" + base64(hash.finishBytes()) + "'";
}

}  // namespace addon::gallery::detail
