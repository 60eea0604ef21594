// SPDX-License-Identifier: MIT
#include "addon/project/PlainText.h"

#include <algorithm>
#include <cstdint>

namespace addon::project {

namespace {

bool isControl(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte < 0x20 || byte == 0x7F;
}

/// The length of U+0080 to U+009F, U+FFFE or U+FFFF at `at` in bytes, or 0 for other characters.
std::size_t oddCharacterAt(std::string_view text, std::size_t at) {
  const auto byte = [&](std::size_t i) {
    return at + i < text.size() ? static_cast<unsigned char>(text[at + i]) : 0u;
  };
  if (byte(0) == 0xC2u && byte(1) < 0xA0u) return 2;
  const bool isNoCharacter = byte(0) == 0xEFu && byte(1) == 0xBFu && byte(2) >= 0xBEu;
  return isNoCharacter ? 3 : 0;
}

/// The length in bytes of the character at `at` if it is not allowed, else 0.
std::size_t unfitForXmlAt(std::string_view text, std::size_t at) {
  const auto byte = static_cast<unsigned char>(text[at]);
  if (byte < 0x20) return byte == '\t' || byte == '\n' || byte == '\r' ? 0 : 1;
  return oddCharacterAt(text, at) == 3 ? 3 : 0;
}

std::size_t unfitForManifestAt(std::string_view text, std::size_t at) {
  if (text[at] == '\x7F') return 1;
  return std::max(oddCharacterAt(text, at), unfitForXmlAt(text, at));
}

/// "U+0007"
std::string nameOf(std::string_view character) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  const auto code = static_cast<std::uint16_t>(opc::fromUtf8(character).front());
  std::string name = "U+";
  for (int shift = 12; shift >= 0; shift -= 4) name += kDigits[(code >> shift) & 0xF];
  return name;
}

template <typename UnfitAt>
std::string faultOf(std::string_view text, UnfitAt unfitAt) {
  if (!opc::isUtf8(text)) return "it is not UTF-8";
  for (std::size_t at = 0; at < text.size(); ++at) {
    const std::size_t size = unfitAt(text, at);
    if (size == 0) continue;
    const std::string name = nameOf(text.substr(at, size));
    return size == 3 ? "it contains " + name + ", which XML cannot carry"
                     : "it contains the control character " + name;
  }
  return {};
}

}  // namespace

bool isManifestText(std::string_view text) {
  return manifestTextFault(text).empty();
}

std::string manifestTextFault(std::string_view text) {
  return faultOf(text, unfitForManifestAt);
}

std::string xmlTextFault(std::string_view text) {
  return faultOf(text, unfitForXmlAt);
}

bool isManifestLine(std::string_view text) {
  return isManifestText(text) && text.find_first_of("\t\n\r") == text.npos;
}

std::string asOneLine(std::string_view text) {
  std::string line;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t odd = oddCharacterAt(text, at);
    const bool isGap = odd != 0 || text[at] == ' ' || isControl(text[at]);
    if (!isGap) {
      line += text[at];
    } else if (!line.empty() && line.back() != ' ') {
      line += ' ';
    }
    at += std::max<std::size_t>(odd, 1);
  }
  if (!line.empty() && line.back() == ' ') line.pop_back();
  return line;
}

bool startsWithWord(std::string_view text, std::string_view start) {
  return text.size() >= start.size() &&
         opc::toLowerAscii(text.substr(0, start.size())) == opc::toLowerAscii(start);
}

}  // namespace addon::project
