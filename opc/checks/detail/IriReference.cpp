// SPDX-License-Identifier: MIT
#include "opc/checks/detail/IriReference.h"

#include <unicode/utf16.h>

#include <algorithm>

#include "opc/model/NameCharacters.h"

namespace opc::checks::detail {
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

enum class PrivateUse { Forbidden, Allowed };

bool isPlain(char32_t c, PrivateUse privateUse) {
  constexpr std::u32string_view kMarks = U"-._~!$&'()*+,;=:@/?";
  if (c < 0x80) {
    const auto ascii = static_cast<char16_t>(c);
    return isLetter(ascii) || isDigit(ascii) || kMarks.find(c) != std::u32string_view::npos;
  }
  return model::isIriCharacter(c) || (privateUse == PrivateUse::Allowed && model::isIriPrivate(c));
}

bool isEscape(std::u16string_view text, std::size_t at) {
  return text[at] == u'%' && text.size() - at >= 3 && isHexadecimal(text[at + 1]) &&
         isHexadecimal(text[at + 2]);
}

bool hasPlainCharacters(std::u16string_view text, PrivateUse privateUse = PrivateUse::Forbidden) {
  for (std::size_t at = 0; at < text.size();) {
    if (isEscape(text, at)) {
      at += 3;
      continue;
    }
    UChar32 c = 0;
    U16_NEXT(text.data(), at, text.size(), c);
    if (!isPlain(static_cast<char32_t>(c), privateUse)) return false;
  }
  return true;
}

bool isPathAndQuery(std::u16string_view text) {
  const std::size_t query = std::min(text.find(u'?'), text.size());
  return hasPlainCharacters(text.substr(0, query)) &&
         hasPlainCharacters(text.substr(query), PrivateUse::Allowed);
}

bool isScheme(std::u16string_view text) {
  return !text.empty() && isLetter(text[0]) &&
         std::all_of(text.begin(), text.end(), [](char16_t c) {
           return isLetter(c) || isDigit(c) || c == u'+' || c == u'-' || c == u'.';
         });
}

bool isHost(std::u16string_view text) {
  if (!text.starts_with(u'[')) return hasPlainCharacters(text);
  return text.size() > 2 && text.ends_with(u']') &&
         hasPlainCharacters(text.substr(1, text.size() - 2));
}

// A host, which may be an address in brackets, optionally with a user before and a port after it.
bool isAuthority(std::u16string_view text) {
  const std::size_t at = text.rfind(u'@');
  if (at != std::u16string_view::npos) {
    if (!hasPlainCharacters(text.substr(0, at))) return false;
    text = text.substr(at + 1);
  }
  const std::size_t afterAddress =
      text.starts_with(u'[') ? std::min(text.find(u']'), text.size()) : 0;
  const std::size_t colon = std::min(text.find(u':', afterAddress), text.size());
  const std::u16string_view port = text.substr(std::min(colon + 1, text.size()));
  return isHost(text.substr(0, colon)) && std::all_of(port.begin(), port.end(), isDigit);
}

}  // namespace

bool isIriReference(std::u16string_view text) {
  const std::size_t hash = std::min(text.find(u'#'), text.size());
  if (hash < text.size() && !hasPlainCharacters(text.substr(hash + 1))) return false;
  text = text.substr(0, hash);
  const std::size_t colon = text.find(u':');
  if (colon < text.find_first_of(u"/?")) {  // the colon comes first, so it ends a scheme
    if (!isScheme(text.substr(0, colon))) return false;
    text = text.substr(colon + 1);
  }
  if (!text.starts_with(u"//")) return isPathAndQuery(text);
  text = text.substr(2);
  const std::size_t end = std::min(text.find_first_of(u"/?"), text.size());
  return isAuthority(text.substr(0, end)) && isPathAndQuery(text.substr(end));
}

}  // namespace opc::checks::detail
