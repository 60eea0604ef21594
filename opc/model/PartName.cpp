// SPDX-License-Identifier: MIT
#include "opc/model/PartName.h"

#include <unicode/utf8.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/model/NameCharacters.h"

namespace opc::model {
namespace {

constexpr std::string_view kRelationshipsFolder = "_rels";
constexpr std::string_view kRelationshipsEnding = ".rels";

FormatError invalidName(const std::string& name, const char* rule, const char* why) {
  return {rule, "invalid part name '" + name + "': " + why, ErrorCode::InvalidName};
}

// The name in UTF-8, checked, with its leading slash.
std::string checkedName(std::u16string_view name) {
  std::string given;
  try {
    given = toUtf8(name);
  } catch (const Exception&) {
    throw invalidName(toUtf8ForDisplay(name), "PN-2", "a surrogate stands alone");
  }
  if (!given.starts_with('/')) throw invalidName(given, "PN-1", "it does not start with '/'");
  const NameFault* fault = findNameFault(std::string_view(given).substr(1));
  if (fault != nullptr) throw invalidName(given, fault->rule, fault->why);
  return given;
}

// 0 when there is no such character.
std::size_t startAfterLast(char c, std::string_view text) {
  if (text.empty()) return 0;
  const void* found = ::memrchr(text.data(), c, text.size());
  if (found == nullptr) return 0;
  return static_cast<std::size_t>(static_cast<const char*>(found) - text.data()) + 1;
}

std::size_t lastSegmentStart(std::string_view itemName) {
  return startAfterLast('/', itemName);
}

bool endsWithFolded(std::string_view text, std::string_view lowerEnding) {
  if (text.size() < lowerEnding.size()) return false;
  const std::string_view ending = text.substr(text.size() - lowerEnding.size());
  for (std::size_t i = 0; i < ending.size(); ++i) {
    if (toLowerAscii(ending[i]) != lowerEnding[i]) return false;
  }
  return true;
}

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

// 0 for characters that need no closer look; of dots only the place matters.
constexpr std::array<std::uint8_t, 256> kNeedsLook = [] {
  std::array<std::uint8_t, 256> needs{};
  for (std::size_t byte = 0; byte < needs.size(); ++byte) {
    needs[byte] = kKinds[byte] == Kind::Plain || kKinds[byte] == Kind::Dot ? 0 : 1;
  }
  return needs;
}();

FormatError undecodable(std::string_view encoded, const char* rule, const char* why) {
  return {rule, "cannot decode name '" + std::string(encoded) + "': " + why,
          ErrorCode::InvalidName};
}

}  // namespace

PartName::PartName(std::u16string_view name) {
  given_ = checkedName(name);
  canonical_ = canonicalItemName(given_);
  key_ = toLowerAscii(canonical_);
  if (given_ == canonical_) given_.clear();
}

PartName::PartName(std::string given, std::string canonical)
    : given_(std::move(given)), canonical_(std::move(canonical)), key_(toLowerAscii(canonical_)) {
  if (given_ == canonical_) given_.clear();
}

PartName PartName::fromItemName(std::string_view itemName) {
  const NameFault* fault = findNameFault(itemName);
  std::string given = "/" + std::string(itemName);
  if (fault != nullptr) throw invalidName(given, fault->rule, fault->why);
  std::string canonical = canonicalItemName(given);
  return {std::move(given), std::move(canonical)};
}

std::u16string PartName::toString() const {
  return fromUtf8(given_.empty() ? canonical_ : given_);
}

std::string_view PartName::itemName() const {
  return std::string_view(canonical_).substr(1);
}

std::string_view PartName::getExtension() const {
  return extensionOf(itemName());
}

bool PartName::isRelationshipsPartName() const {
  return isRelationshipsItemName(itemName());
}

PartName PartName::relationshipsPartName() const {
  const std::string name = "/" + relationshipsItemName(itemName());
  return {name, name};
}

std::string_view extensionOf(std::string_view itemName) {
  const std::size_t afterDot = startAfterLast('.', itemName);
  const bool hasDot = afterDot != 0 && afterDot > lastSegmentStart(itemName);
  return hasDot ? itemName.substr(afterDot) : std::string_view();
}

bool isRelationshipsItemName(std::string_view itemName) {
  if (!endsWithFolded(itemName, kRelationshipsEnding)) return false;
  const std::size_t start = lastSegmentStart(itemName);
  if (start == 0) return false;
  const std::string_view folder = itemName.substr(0, start - 1);
  return endsWithFolded(folder.substr(lastSegmentStart(folder)), kRelationshipsFolder) &&
         folder.size() - lastSegmentStart(folder) == kRelationshipsFolder.size();
}

std::string relationshipsItemName(std::string_view itemName) {
  const std::size_t start = lastSegmentStart(itemName);
  std::string result(itemName.substr(0, start));
  result += kRelationshipsFolder;
  result += '/';
  result += itemName.substr(start);
  result += kRelationshipsEnding;
  return result;
}

std::string sourceOfRelationships(std::string_view itemName) {
  const std::size_t start = lastSegmentStart(itemName);
  const std::size_t folder = start - kRelationshipsFolder.size() - 1;
  std::string result(itemName.substr(0, folder));
  result += itemName.substr(start, itemName.size() - start - kRelationshipsEnding.size());
  return result;
}

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

bool isPlainSegment(std::string_view segment) noexcept {
  if (segment.empty() || segment.back() == '.') return false;
  const auto* next = reinterpret_cast<const unsigned char*>(segment.data());
  std::size_t left = segment.size();
  unsigned needs = 0;  // of all bytes: a branch for each takes longer
  for (; left >= 4; left -= 4, next += 4) {
    needs |= static_cast<unsigned>(kNeedsLook[next[0]]) | kNeedsLook[next[1]] |
             kNeedsLook[next[2]] | kNeedsLook[next[3]];
  }
  for (; left > 0; --left, ++next) needs |= kNeedsLook[*next];
  return needs == 0;
}

std::string canonicalItemName(std::string_view itemName) {
  std::string result;
  result.reserve(itemName.size());
  for (const char c : itemName) {
    if (static_cast<unsigned char>(c) < 0x80) {
      result += c;
    } else {
      appendPercentEncoded(result, c);
    }
  }
  return result;
}

std::string percentEncodePath(std::string_view path) {
  std::string result;
  result.reserve(path.size());
  for (const char c : path) {
    if (c == '/' || isPathCharacter(c)) {
      result += c;
    } else {
      appendPercentEncoded(result, c);
    }
  }
  return result;
}

std::string percentDecodePath(std::string_view encoded) {
  std::string result;
  result.reserve(encoded.size());
  for (std::size_t at = 0; at < encoded.size(); ++at) {
    if (encoded[at] != '%') {
      result += encoded[at];
      continue;
    }
    const int octet = encoded.size() - at < 3 ? -1 : octetValue(encoded[at + 1], encoded[at + 2]);
    if (octet < 0) {
      throw undecodable(encoded, "PN-3", "'%' is not followed by two hexadecimal digits");
    }
    result += static_cast<char>(octet);
    at += 2;
  }
  if (!isUtf8(result))
    throw undecodable(encoded, "PN-12", "it stands for bytes that are not UTF-8");
  return result;
}

}  // namespace opc::model
