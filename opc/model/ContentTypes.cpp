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
#include "opc/model/XercesHelper.h"
#include "opc/model/detail/ContentTypesReader.h"
#include "opc/model/detail/XmlWriting.h"

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

constexpr std::string_view kEndOfDocument = "</Types>";

std::string startOfDocument() {
  std::string xml(detail::kXmlDeclaration);
  xml += "<Types";
  detail::appendAttribute(xml, "xmlns", toUtf8(kContentTypesNamespace));
  return xml += '>';
}

void appendEntry(std::string& xml, const ContentTypes::Default& entry) {
  xml += "<Default";
  detail::appendAttribute(xml, "Extension", entry.extension);
  detail::appendAttribute(xml, "ContentType", entry.type.withoutSpaces());
  xml += "/>";
}

void appendEntry(std::string& xml, const ContentTypes::Override& entry) {
  xml += "<Override";
  detail::appendAttribute(xml, "PartName", "/" + entry.itemName);
  detail::appendAttribute(xml, "ContentType", entry.type.withoutSpaces());
  xml += "/>";
}

template <typename Entry>
detail::ElementSize sizeOf(const Entry& entry) {
  std::string xml;
  appendEntry(xml, entry);
  return {xml.size(), 3};
}

std::string shown(const std::string& text) {
  constexpr std::size_t kShown = 64;
  return text.size() <= kShown ? text : text.substr(0, kShown) + "...";
}

void checkLengths(const std::string& itemName, const ContentType& type) {
  const std::string written = type.withoutSpaces();
  if (!detail::isReadableLength(written.size())) {
    throw detail::unreadableLength(
        "content type '" + shown(written) + "' of '/" + shown(itemName) + "': it", written.size());
  }
  const std::size_t nameLength = itemName.size() + 1;
  if (!detail::isReadableLength(nameLength)) {
    throw detail::unreadableLength("content type of '/" + shown(itemName) + "': the name",
                                   nameLength);
  }
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
                                  "': that is not an extension");
  }
  if (findDefault(extension) != nullptr) {
    throw FormatError("CT-6",
                      "default type for extension '" + std::string(extension) + "': there are two");
  }
  const std::uint32_t index = nextNumber(defaults_.size());
  defaults_.push_back({std::string(extension), type});
  if (size_) size_->add(sizeOf(defaults_.back()));
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
  if (size_) size_->add(sizeOf(overrides_.back()));
  overrideByName_.insert(hash, index);
  changed_ = true;
}

detail::DocumentSize& ContentTypes::size() {
  if (size_) return *size_;
  detail::DocumentSize size({startOfDocument().size() + kEndOfDocument.size(), 2});
  for (const Default& entry : defaults_) size.add(sizeOf(entry));
  for (const Override& entry : overrides_) size.add(sizeOf(entry));
  return size_.emplace(size);
}

void ContentTypes::requireRoom(const detail::ElementSize& needed, std::string_view itemName) {
  if (size().hasRoomFor(needed)) return;
  throw detail::noRoom("content type of '/" + shown(std::string(itemName)) + "'");
}

bool ContentTypes::mayBecomeDefault(std::string_view extension, const ContentType& type) const {
  if (extension == kRelationshipsExtension) return false;
  return findDefault(extension) == nullptr && isExtension(extension) && !type.isParticular();
}

void ContentTypes::assign(std::string_view itemName, const ContentType& type, bool mayAddDefault) {
  const std::string extension = toLowerAscii(canonicalItemName(extensionOf(itemName)));
  const ContentType* present = findDefault(extension);
  // An override that a part of the same name left behind would win over any default.
  if (present != nullptr && *present == type) return removeOverride(itemName);

  const std::string canonical = canonicalItemName(itemName);
  checkLengths(canonical, type);
  if (mayAddDefault && mayBecomeDefault(extension, type)) {
    requireRoom(sizeOf(Default{extension, type}), canonical);
    removeOverride(itemName);
    addDefault(extension, type);
  } else {
    requireRoom(sizeOf(Override{canonical, type}), canonical);
    removeOverride(itemName);
    addOverride(itemName, type);
  }
}

void ContentTypes::removeOverride(std::string_view itemName) {
  const std::uint64_t hash = nameHash(itemName);
  const std::uint32_t* found = overrideIndex(hash, itemName);
  if (found == nullptr) return;
  const std::uint32_t index = *found;
  const auto last = static_cast<std::uint32_t>(overrides_.size() - 1);
  if (size_) size_->remove(sizeOf(overrides_[index]));
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

  std::string xml = startOfDocument();
  for (const auto& [key, entry] : defaults) appendEntry(xml, *entry);
  for (const auto& [key, entry] : overrides) appendEntry(xml, *entry);
  return xml += kEndOfDocument;
}

ContentTypes ContentTypes::read(InputStream& stream, FaultSink& faults) {
  ContentTypes types;
  DelayedFaults::collect(faults, [&](FaultSink& delayed) {
    detail::ContentTypesReader reader(types, delayed);
    parsePieces(stream, reader);
  });
  types.setUnchanged();
  return types;
}

}  // namespace opc::model
