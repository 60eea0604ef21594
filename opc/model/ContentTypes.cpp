// SPDX-License-Identifier: MIT
#include "opc/model/ContentTypes.h"

#include <algorithm>
#include <limits>

#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/model/FormatConstants.h"
#include "opc/model/NameCharacters.h"
#include "opc/model/NameKey.h"
#include "opc/model/PartName.h"
#include "opc/model/XmlWriting.h"

namespace opc::model {
namespace {

std::uint64_t extensionHash(std::string_view extension) {
  return extendHash(rootHash(), extension);
}

// Whether a default may stand for it.
bool isExtension(std::string_view extension) {
  constexpr std::string_view kMarks = "!$&'()*+,:=@-_~";
  for (std::size_t at = 0; at < extension.size(); ++at) {
    const char c = extension[at];
    if (isAsciiLetterOrDigit(c) || kMarks.find(c) != std::string_view::npos) continue;
    if (c != '%' || extension.size() - at < 3) return false;
    if (octetValue(extension[at + 1], extension[at + 2]) < 0) return false;
    at += 2;
  }
  return !extension.empty();
}

// Entries are numbered in 32 bits.
std::uint32_t nextNumber(std::size_t count) {
  if (count >= std::numeric_limits<std::uint32_t>::max()) {
    throw Exception(ErrorCode::TooLarge, "too many content types");
  }
  return static_cast<std::uint32_t>(count);
}

}  // namespace

const ContentType* ContentTypes::find(std::string_view itemName) const {
  const ContentType* type = findOverride(nameHash(itemName), itemName);
  return type != nullptr ? type : findDefault(extensionOf(itemName));
}

const std::uint32_t* ContentTypes::overrideIndex(std::uint64_t hash,
                                                 std::string_view itemName) const {
  return overrideByName_.find(
      hash, [&](std::uint32_t index) { return equalKeys(overrides_[index].itemName, itemName); });
}

const ContentType* ContentTypes::findOverride(std::uint64_t hash, std::string_view itemName) const {
  const std::uint32_t* index = overrideIndex(hash, itemName);
  return index == nullptr ? nullptr : &overrides_[*index].type;
}

const ContentType* ContentTypes::findDefault(std::string_view extension) const {
  const std::uint32_t* index =
      defaultByExtension_.find(extensionHash(extension), [&](std::uint32_t candidate) {
        return equalKeys(defaults_[candidate].extension, extension);
      });
  return index == nullptr ? nullptr : &defaults_[*index].type;
}

void ContentTypes::addDefault(std::string_view extension, const ContentType& type) {
  if (!isExtension(extension)) {
    throw FormatError("CT-4", "default type for extension '" + std::string(extension) +
                                  "': that is no extension");
  }
  if (findDefault(extension) != nullptr) {
    throw FormatError("CT-6",
                      "default type for extension '" + std::string(extension) + "': there are two");
  }
  const std::uint32_t index = nextNumber(defaults_.size());
  defaults_.push_back({std::string(extension), type});
  defaultByExtension_.insert(extensionHash(extension), index);
  changed_ = true;
}

void ContentTypes::addOverride(std::string_view itemName, const ContentType& type) {
  const std::uint64_t hash = nameHash(itemName);
  if (overrideIndex(hash, itemName) != nullptr) {
    throw FormatError("CT-6", "type override for '/" + std::string(itemName) + "': there are two");
  }
  const std::uint32_t index = nextNumber(overrides_.size());
  overrides_.push_back({canonicalItemName(itemName), type});
  overrideByName_.insert(hash, index);
  changed_ = true;
}

void ContentTypes::assign(std::string_view itemName, const ContentType& type, bool mayAddDefault) {
  // An override that a part of the same name left behind would win over any default.
  removeOverride(itemName);
  const std::string extension = toLowerAscii(canonicalItemName(extensionOf(itemName)));
  const ContentType* present = findDefault(extension);
  if (present != nullptr && *present == type) return;
  if (present == nullptr && mayAddDefault && isExtension(extension) && !type.isParticular()) {
    addDefault(extension, type);
  } else {
    addOverride(itemName, type);
  }
}

void ContentTypes::removeOverride(std::string_view itemName) {
  const std::uint64_t hash = nameHash(itemName);
  const std::uint32_t* found = overrideIndex(hash, itemName);
  if (found == nullptr) return;
  const std::uint32_t index = *found;
  const auto last = static_cast<std::uint32_t>(overrides_.size() - 1);
  overrideByName_.erase(hash, [index](std::uint32_t candidate) { return candidate == index; });
  if (index != last) {
    const std::uint64_t lastHash = nameHash(overrides_[last].itemName);
    *overrideByName_.find(lastHash, [last](std::uint32_t candidate) { return candidate == last; }) =
        index;
    overrides_[index] = std::move(overrides_[last]);
  }
  overrides_.pop_back();
  changed_ = true;
}

std::string ContentTypes::toXml() const {
  std::vector<std::pair<std::string, const Default*>> defaults;
  for (const Default& entry : defaults_) {
    defaults.emplace_back(toLowerAscii(entry.extension), &entry);
  }
  std::vector<std::pair<std::string, const Override*>> overrides;
  overrides.reserve(overrides_.size());
  for (const Override& entry : overrides_) {
    overrides.emplace_back(toLowerAscii(entry.itemName), &entry);
  }
  const auto byName = [](const auto& a, const auto& b) { return a.first < b.first; };
  std::sort(defaults.begin(), defaults.end(), byName);
  std::sort(overrides.begin(), overrides.end(), byName);

  std::string xml(kXmlDeclaration);
  xml += "<Types";
  appendAttribute(xml, "xmlns", toUtf8(kContentTypesNamespace));
  xml += '>';
  for (const auto& [key, entry] : defaults) {
    xml += "<Default";
    appendAttribute(xml, "Extension", entry->extension);
    appendAttribute(xml, "ContentType", entry->type.withoutBlanks());
    xml += "/>";
  }
  for (const auto& [key, entry] : overrides) {
    xml += "<Override";
    appendAttribute(xml, "PartName", "/" + entry->itemName);
    appendAttribute(xml, "ContentType", entry->type.withoutBlanks());
    xml += "/>";
  }
  return xml += "</Types>";
}

}  // namespace opc::model
