// SPDX-License-Identifier: MIT
#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/model/NameCharacters.h"
#include "opc/model/PartName.h"

namespace opc::model {
namespace {

FormatError undecodable(std::string_view encoded, const char* rule, const char* why) {
  return {rule, "cannot decode name '" + std::string(encoded) + "': " + why,
          ErrorCode::InvalidName};
}

}  // namespace

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
  if (!isUtf8(result)) throw undecodable(encoded, "PN-12", "it stands for bytes that are no UTF-8");
  return result;
}

}  // namespace opc::model
