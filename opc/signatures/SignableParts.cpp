// SPDX-License-Identifier: MIT
#include "opc/signatures/SignableParts.h"

#include <algorithm>
#include <string_view>

#include "opc/Exception.h"
#include "opc/signatures/SignatureParts.h"

namespace opc::signatures {

using model::ContentType;
using model::Package;
using model::PartId;

namespace {

constexpr std::string_view kQuery = "?ContentType=";

/// Whether a character may be in the query of a URI as it is.
bool isPlain(char c) {
  constexpr std::string_view kOthers = "-._~!$&'()*+,;=:@/?";
  const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
  return isLetter || (c >= '0' && c <= '9') || kOthers.find(c) != std::string_view::npos;
}

std::string encode(std::string_view text) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string encoded;
  for (const char c : text) {
    if (isPlain(c)) {
      encoded += c;
      continue;
    }
    const auto byte = static_cast<unsigned char>(c);
    encoded += '%';
    encoded += kDigits[byte >> 4];
    encoded += kDigits[byte & 15];
  }
  return encoded;
}

}  // namespace

std::vector<SignablePart> signableParts(Package& package) {
  std::vector<SignablePart> parts;
  package.visitParts("", [&](PartId part) {
    parts.push_back({partNameOf(package.itemNameOf(part)),
                     package.contentTypeOf(part).withoutSpaces(),
                     {},
                     part});
  });
  for (model::RelationshipsItem& item : package.relationshipsItems()) {
    std::string type = package.typeOfRelationshipsItem(item.name).withoutSpaces();
    parts.push_back({partNameOf(item.name), std::move(type), std::move(item.name), item.stored});
  }
  std::sort(parts.begin(), parts.end(),
            [](const SignablePart& a, const SignablePart& b) { return a.name < b.name; });
  return parts;
}

std::unique_ptr<InputStream> open(Package& package, const SignablePart& part) {
  return part.isRelationships() ? package.openRelationshipsItem(part.relationshipsItem)
                                : package.openPart(*part.id);
}

std::string toReference(const SignablePart& part) {
  return part.name + std::string(kQuery) + encode(part.type);
}

std::optional<PartReference> parseReference(const std::string& uri) {
  const std::size_t query = uri.find('?');
  if (query == uri.npos || query < 2) return std::nullopt;
  if (uri.compare(query, kQuery.size(), kQuery) != 0) return std::nullopt;
  try {
    const std::string type = model::percentDecodePath(uri.substr(query + kQuery.size()));
    return PartReference{partNameOf(std::string_view(uri).substr(1, query - 1)),
                         ContentType::fromAscii(type).withoutSpaces()};
  } catch (const Exception&) {
    return std::nullopt;
  }
}

}  // namespace opc::signatures
