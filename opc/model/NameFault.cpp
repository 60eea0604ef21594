// SPDX-License-Identifier: MIT
#include <unicode/utf8.h>

#include <array>
#include <cstdint>

#include "opc/model/NameCharacters.h"
#include "opc/model/PartName.h"

namespace opc::model {
namespace {

constexpr NameFault kEmpty{"PN-1", "it is empty"};
constexpr NameFault kEmptySegment{"PN-1", "a segment is empty"};
constexpr NameFault kEndsInSlash{"PN-1", "it ends in '/'"};
constexpr NameFault kCharacter{"PN-2", "a character must be percent-encoded"};
constexpr NameFault kNotUtf8{"PN-2", "it is not UTF-8"};
constexpr NameFault kUnicodeCharacter{"PN-2", "a character outside ASCII may not be in a name"};
constexpr NameFault kHexadecimal{"PN-3", "'%' is not followed by two hexadecimal digits"};
constexpr NameFault kEncodedSlash{"PN-4", "a slash, a backslash or a NUL is percent-encoded"};
constexpr NameFault kEncodedUnreserved{"PN-5",
                                       "a letter, a digit or one of '-._~' is percent-encoded"};
constexpr NameFault kTrailingDot{"PN-6", "a segment ends in a dot"};

enum class Kind : std::uint8_t { Plain, Slash, Dot, Percent, Wide, Forbidden };

constexpr std::array<Kind, 256> kKinds = [] {
  std::array<Kind, 256> kinds{};
  for (unsigned byte = 0; byte < 256; ++byte) {
    const char c = static_cast<char>(byte);
    kinds[byte] = byte >= 0x80         ? Kind::Wide
                  : c == '/'           ? Kind::Slash
                  : c == '.'           ? Kind::Dot
                  : c == '%'           ? Kind::Percent
                  : isPathCharacter(c) ? Kind::Plain
                                       : Kind::Forbidden;
  }
  return kinds;
}();

const NameFault* checkEscape(std::string_view name, std::size_t at) {
  if (name.size() - at < 3) return &kHexadecimal;
  const int octet = octetValue(name[at + 1], name[at + 2]);
  if (octet < 0) return &kHexadecimal;
  if (octet == '/' || octet == '\\' || octet == 0) return &kEncodedSlash;
  if (octet < 0x80 && isUnreserved(static_cast<char>(octet))) return &kEncodedUnreserved;
  return nullptr;
}

// Moves `at` to the last byte of the character.
const NameFault* checkWide(std::string_view name, std::size_t& at) {
  const std::size_t left = name.size() - at < 4 ? name.size() - at : 4;
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(name.data() + at);
  std::int32_t length = 0;
  UChar32 character = 0;
  U8_NEXT(bytes, length, static_cast<std::int32_t>(left), character);
  if (character < 0) return &kNotUtf8;
  at += static_cast<std::size_t>(length) - 1;
  return isIriCharacter(static_cast<char32_t>(character)) ? nullptr : &kUnicodeCharacter;
}

// Whether the segment that the byte at `at` belongs to ends with it.
bool isSegmentEnd(std::string_view name, std::size_t at) {
  return at + 1 == name.size() || name[at + 1] == '/';
}

// The first character from `at` that needs a look, or the end: in most names that is all.
std::size_t skipPlain(std::string_view name, std::size_t at) {
  while (at < name.size() && kKinds[static_cast<unsigned char>(name[at])] == Kind::Plain) ++at;
  return at;
}

const NameFault* checkSlash(std::string_view name, std::size_t at) {
  if (at == 0 || name[at - 1] == '/') return &kEmptySegment;
  return at + 1 == name.size() ? &kEndsInSlash : nullptr;
}

}  // namespace

const NameFault* findNameFault(std::string_view itemName) {
  if (itemName.empty()) return &kEmpty;
  for (std::size_t at = skipPlain(itemName, 0); at < itemName.size();
       at = skipPlain(itemName, at + 1)) {
    const NameFault* fault = nullptr;
    switch (kKinds[static_cast<unsigned char>(itemName[at])]) {
      case Kind::Plain:
        break;
      case Kind::Slash:
        fault = checkSlash(itemName, at);
        break;
      case Kind::Dot:
        fault = isSegmentEnd(itemName, at) ? &kTrailingDot : nullptr;
        break;
      case Kind::Percent:
        fault = checkEscape(itemName, at);
        break;
      case Kind::Wide:
        fault = checkWide(itemName, at);
        break;
      case Kind::Forbidden:
        fault = &kCharacter;
    }
    if (fault != nullptr) return fault;
  }
  return nullptr;
}

}  // namespace opc::model
