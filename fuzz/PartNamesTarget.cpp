// SPDX-License-Identifier: MIT
// Names: the input has two, on a line each; the second may be the target of a relationship.
#include <string>

#include "fuzz/Require.h"
#include "opc/Text.h"
#include "opc/model/NameKey.h"
#include "opc/model/PartName.h"
#include "opc/model/detail/TargetResolution.h"

namespace {

using fuzz::require;
using opc::model::PartName;

std::string keyOf(std::string_view itemName) {
  return opc::toLowerAscii(opc::model::canonicalItemName(itemName));
}

// Properties of any two texts, part names or not.
void checkKeys(std::string_view a, std::string_view b) {
  const std::string x = keyOf(a);
  const std::string y = keyOf(b);
  require(opc::model::equalKeys(a, b) == (x == y), "keys are equal when they read so");
  require(opc::model::keyStartsWith(a, b) == x.starts_with(y), "a key begins as it reads");
  require((opc::model::nameHash(a) == opc::model::nameHash(b)) == (x == y),
          "equal keys have equal hashes, and others do not");
}

void checkEncoding(std::string_view text) {
  const std::string encoded = opc::model::percentEncodePath(text);
  require(opc::toASCIIString(opc::fromUtf8(encoded)) == encoded, "an encoded path is ASCII");
  const auto decoded = fuzz::unlessRefused([&] { return opc::model::percentDecodePath(encoded); });
  require(decoded.has_value() == opc::isUtf8(text), "UTF-8, and nothing else, is decoded");
  require(!decoded || *decoded == text, "an encoded path decodes to itself");
  const auto bare = fuzz::unlessRefused([&] { return opc::model::percentDecodePath(text); });
  require(!bare || opc::isUtf8(*bare), "what is decoded is UTF-8");
}

void checkForms(const PartName& name, const std::u16string& given) {
  require(name.toString() == given, "a name is kept as it was given");
  require(name.canonical() == "/" + std::string(name.itemName()), "an item has no slash in front");
  require(name.key() == "/" + keyOf(name.itemName()), "the key is the folded canonical form");
  require(name.getExtension() == opc::model::extensionOf(name.itemName()), "one extension");
  const PartName canonical(opc::fromUtf8(name.canonical()));
  require(canonical == name, "the canonical form is an equal name");
  require(canonical.canonical() == name.canonical(), "the canonical form is that of itself");
  const PartName item = PartName::fromItemName(name.itemName());
  require(item.canonical() == name.canonical(), "the item's name is that of the part");
}

void checkRelationshipsName(const PartName& name) {
  const std::string_view item = name.itemName();
  const bool isKept = name.isRelationshipsPartName();
  require(isKept == opc::model::isRelationshipsItemName(item), "one answer about relationships");
  if (isKept) return;
  const PartName relationships = name.relationshipsPartName();
  require(relationships.isRelationshipsPartName(), "a relationships part is known by its name");
  require(opc::model::sourceOfRelationships(relationships.itemName()) == item,
          "a relationships part leads back to its source");
}

// The name, or nothing if it is refused.
std::optional<PartName> checkName(std::string_view text) {
  const auto wide = fuzz::unlessRefused([&] { return opc::fromUtf8(text); });
  if (!wide) return std::nullopt;
  auto name = fuzz::unlessRefused([&] { return PartName(*wide); });
  const bool isGood = text.starts_with('/') && opc::model::findNameFault(text.substr(1)) == nullptr;
  require(name.has_value() == isGood, "a name is refused when it has a fault");
  if (!name) return std::nullopt;
  checkForms(*name, *wide);
  checkRelationshipsName(*name);
  return name;
}

void checkTarget(const std::string& source, std::string_view text) {
  const auto resolved = fuzz::unlessRefused(
      [&] { return opc::model::detail::resolveTarget(source, opc::fromUtf8(text)); });
  if (!resolved) return;
  const PartName& name = resolved->name;
  require(opc::model::findNameFault(name.itemName()) == nullptr, "a target is a part name");
  require(resolved->fragment.empty() || resolved->fragment.front() == u'#', "'#' begins it");
  const std::u16string stored = opc::fromUtf8(name.canonical()) + resolved->fragment;
  const auto again = opc::model::detail::resolveTarget("another/source.xml", stored);
  require(again.name.canonical() == name.canonical(), "a resolved target resolves to itself");
  require(again.fragment == resolved->fragment, "a fragment is kept");
  require(!again.corrected, "a resolved target needs no correction");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input = fuzz::textOf(data, size);
  const std::size_t end = std::min(input.find('\n'), input.size());
  const std::string_view first = input.substr(0, end);
  const std::string_view second = input.substr(std::min(end + 1, input.size()));

  checkKeys(first, second);
  checkEncoding(first);
  const auto name = checkName(first);
  const auto other = checkName(second);
  if (name && other) {
    require((*name == *other) == (name->key() == other->key()), "names are equal by their keys");
  }
  checkTarget("", second);
  if (name) checkTarget(std::string(name->itemName()), second);
  return 0;
}
