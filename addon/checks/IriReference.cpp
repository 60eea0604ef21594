// SPDX-License-Identifier: MIT
#include "addon/checks/IriReference.h"

#include <algorithm>

namespace addon::checks {
namespace {

bool isLetter(char16_t c) {
  return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}

bool isDigit(char16_t c) {
  return c >= u'0' && c <= u'9';
}

bool isHexadecimal(char16_t c) {
  return isDigit(c) || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F');
}

// Outside ASCII: no C1 controls, private use (but in queries) or noncharacters. Surrogates were
// paired by whoever read the text.
bool isWideCharacter(char16_t c) {
  return c >= 0xA0 && !(c >= 0xFDD0 && c <= 0xFDEF) && c < 0xFFF0;
}

bool isPlain(char16_t c) {
  constexpr std::u16string_view kMarks = u"-._~!$&'()*+,;=:@/?";
  return isLetter(c) || isDigit(c) || kMarks.find(c) != std::u16string_view::npos ||
         isWideCharacter(c);
}

bool isEscape(std::u16string_view text, std::size_t at) {
  return text[at] == u'%' && text.size() - at >= 3 && isHexadecimal(text[at + 1]) &&
         isHexadecimal(text[at + 2]);
}

bool hasPlainCharacters(std::u16string_view text) {
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (isEscape(text, at)) {
      at += 2;
    } else if (!isPlain(text[at])) {
      return false;
    }
  }
  return true;
}

bool isScheme(std::u16string_view text) {
  return !text.empty() && isLetter(text[0]) &&
         std::all_of(text.begin(), text.end(), [](char16_t c) {
           return isLetter(c) || isDigit(c) || c == u'+' || c == u'-' || c == u'.';
         });
}

// An address in brackets, with a port behind it and a user in front of it perhaps.
bool isAuthority(std::u16string_view text) {
  const std::size_t at = text.rfind(u'@');
  std::u16string_view host = at == std::u16string_view::npos ? text : text.substr(at + 1);
  if (at != std::u16string_view::npos && !hasPlainCharacters(text.substr(0, at))) return false;
  if (!host.starts_with(u'[')) return hasPlainCharacters(host);
  const std::size_t close = host.find(u']');
  if (close == std::u16string_view::npos) return false;
  const std::u16string_view address = host.substr(1, close - 1);
  const std::u16string_view port = host.substr(close + 1);
  return !address.empty() && hasPlainCharacters(address) &&
         (port.empty() || (port[0] == u':' && std::all_of(port.begin() + 1, port.end(), isDigit)));
}

}  // namespace

bool isIriReference(std::u16string_view text) {
  const std::size_t hash = std::min(text.find(u'#'), text.size());
  if (hash < text.size() && !hasPlainCharacters(text.substr(hash + 1))) return false;
  text = text.substr(0, hash);
  const std::size_t colon = text.find(u':');
  if (colon < text.find_first_of(u"/?")) {  // which comes first: it ends a scheme
    if (!isScheme(text.substr(0, colon))) return false;
    text = text.substr(colon + 1);
  }
  if (!text.starts_with(u"//")) return hasPlainCharacters(text);
  text = text.substr(2);
  const std::size_t end = std::min(text.find_first_of(u"/?"), text.size());
  return isAuthority(text.substr(0, end)) && hasPlainCharacters(text.substr(end));
}

}  // namespace addon::checks
