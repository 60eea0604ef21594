// SPDX-License-Identifier: MIT
#include "text/JsonWriter.h"

#include <fmt/format.h>

#include <array>
#include <charconv>
#include <cmath>
#include <iterator>

#include "opc/Text.h"

namespace text {

namespace {

void appendEscaped(std::string& text, std::string_view utf8) {
  for (const char c : utf8) {
    if (c == '"' || c == '\\') {
      text += '\\';
      text += c;
    } else if (c == '\n') {
      text += "\\n";
    } else if (c == '\t') {
      text += "\\t";
    } else if (c == '\r') {
      text += "\\r";
    } else if (static_cast<unsigned char>(c) < 0x20) {
      fmt::format_to(std::back_inserter(text), "\\u{:04x}", static_cast<unsigned char>(c));
    } else {
      text += c;
    }
  }
}

bool isSurrogate(char16_t c) {
  return c >= 0xD800 && c <= 0xDFFF;
}
bool isLead(char16_t c) {
  return c >= 0xD800 && c <= 0xDBFF;
}
bool isTrail(char16_t c) {
  return c >= 0xDC00 && c <= 0xDFFF;
}

}  // namespace

void JsonWriter::breakLine() {
  if (!isIndented_) return;
  text_ += '\n';
  text_.append(hasValues_.size() * 2, ' ');
}

void JsonWriter::startValue() {
  if (isAfterKey_) {
    isAfterKey_ = false;
    return;
  }
  if (hasValues_.empty()) return;
  if (hasValues_.back()) text_ += ',';
  hasValues_.back() = true;
  breakLine();
}

void JsonWriter::begin(char bracket) {
  startValue();
  text_ += bracket;
  hasValues_.push_back(false);
}

void JsonWriter::end(char bracket) {
  const bool hadValues = hasValues_.back();
  hasValues_.pop_back();
  if (hadValues) breakLine();
  text_ += bracket;
}

void JsonWriter::key(std::string_view name) {
  value(name);
  text_ += isIndented_ ? ": " : ":";
  isAfterKey_ = true;
}

void JsonWriter::null() {
  startValue();
  text_ += "null";
}

void JsonWriter::value(bool flag) {
  startValue();
  text_ += flag ? "true" : "false";
}

void JsonWriter::value(std::string_view utf8) {
  startValue();
  text_ += '"';
  // Paths of the system may be any bytes, and JSON may not.
  if (opc::isUtf8(utf8)) {
    appendEscaped(text_, utf8);
  } else {
    appendEscaped(text_, opc::printable(utf8));
  }
  text_ += '"';
}

void JsonWriter::value(std::u16string_view text) {
  startValue();
  text_ += '"';
  std::size_t begin = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (!isSurrogate(text[i])) continue;
    if (isLead(text[i]) && i + 1 < text.size() && isTrail(text[i + 1])) {
      ++i;
      continue;
    }
    appendEscaped(text_, opc::toUtf8(text.substr(begin, i - begin)));
    fmt::format_to(std::back_inserter(text_), "\\u{:04x}", static_cast<unsigned>(text[i]));
    begin = i + 1;
  }
  appendEscaped(text_, opc::toUtf8(text.substr(begin)));
  text_ += '"';
}

void JsonWriter::value(std::uint64_t number) {
  startValue();
  text_ += std::to_string(number);
}

void JsonWriter::value(double number) {
  startValue();
  if (number == 0 && std::signbit(number)) {
    text_ += "-0.0";  // "-0" would read back as the integer 0
    return;
  }
  std::array<char, 32> digits{};
  const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), number);
  text_.append(digits.data(), result.ptr);
}

void JsonWriter::textOrNull(std::string_view utf8) {
  if (utf8.empty()) {
    null();
  } else {
    value(utf8);
  }
}

}  // namespace text
