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

void appendEscape(std::string& text, unsigned unit) {
  fmt::format_to(std::back_inserter(text), "\\u{:04x}", unit);
}

bool isForTerminals(unsigned point) {
  return (point >= 0x7F && point < 0xA0) || point == 0x061C || point == 0x200E || point == 0x200F ||
         (point >= 0x202A && point <= 0x202E) || (point >= 0x2066 && point <= 0x2069);
}

/// The character that `utf8`, which is valid, begins with, if a terminal would act on it, else 0.
unsigned leadingControl(std::string_view utf8) {
  const auto bits = [&](std::size_t at) { return static_cast<unsigned char>(utf8[at]) & 0x3Fu; };
  const auto lead = static_cast<unsigned char>(utf8[0]);
  unsigned point = lead < 0x80 ? lead : 0;
  if (lead >= 0xC0 && lead < 0xE0) point = (lead & 0x1Fu) << 6 | bits(1);
  if (lead == 0xE2) point = 0x2000 | bits(1) << 6 | bits(2);
  return isForTerminals(point) ? point : 0;
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

void JsonWriter::append(std::string_view utf8) {
  const bool escapesControls = escapes_ == Escapes::ForTerminals;
  for (std::size_t i = 0; i < utf8.size(); ++i) {
    const char c = utf8[i];
    if (c == '"' || c == '\\') {
      text_ += '\\';
      text_ += c;
    } else if (c == '\n') {
      text_ += "\\n";
    } else if (c == '\t') {
      text_ += "\\t";
    } else if (c == '\r') {
      text_ += "\\r";
    } else if (static_cast<unsigned char>(c) < 0x20) {
      appendEscape(text_, static_cast<unsigned char>(c));
    } else if (const unsigned point = escapesControls ? leadingControl(utf8.substr(i)) : 0) {
      appendEscape(text_, point);
      while (i + 1 < utf8.size() && opc::isUtf8Continuation(utf8[i + 1])) ++i;
    } else {
      text_ += c;
    }
  }
}

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
    append(utf8);
  } else {
    append(opc::printable(utf8));
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
    append(opc::toUtf8(text.substr(begin, i - begin)));
    appendEscape(text_, text[i]);
    begin = i + 1;
  }
  append(opc::toUtf8(text.substr(begin)));
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
