// SPDX-License-Identifier: MIT
#include "opc/model/RelationshipSet.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <xercesc/util/XMLChar.hpp>

#include "opc/Exception.h"
#include "opc/KeyedHash.h"
#include "opc/Text.h"
#include "opc/model/DomText.h"
#include "opc/model/FormatConstants.h"
#include "opc/model/PartName.h"
#include "opc/model/XercesHelper.h"
#include "opc/model/detail/RelationshipsReader.h"
#include "opc/model/detail/TargetResolution.h"
#include "opc/model/detail/XmlCharacters.h"
#include "opc/model/detail/XmlWriting.h"

namespace opc::model {
namespace {

// Ids that an add-on's screenshot and thumbnail are known by.
bool isReservedId(std::u16string_view id) {
  return id == u"rId100" || id == u"rId101";
}

void requireText(std::u16string_view text, const char* what) {
  if (detail::isXmlText(text)) return;
  throw Exception(ErrorCode::InvalidText, std::string("relationship ") + what + " '" +
                                              toUtf8ForDisplay(text) +
                                              "': it holds characters that XML cannot carry");
}

FormatError refused(std::string rule, const std::string& what, const char* why) {
  return {std::move(rule), what + ": " + why, ErrorCode::InvalidArgument};
}

std::uint64_t hashOf(std::u16string_view text) {
  return keyedHash({reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t)});
}

bool isExternal(const Relationship& relationship) {
  return relationship.getTargetMode() == TargetMode::External;
}

std::string startOfDocument() {
  std::string xml(detail::kXmlDeclaration);
  xml += "<Relationships";
  detail::appendAttribute(xml, "xmlns", toUtf8(kRelationshipsNamespace));
  return xml += '>';
}

void appendEntry(std::string& xml, const RelationshipSet::Entry& entry) {
  const Relationship& relationship = entry.relationship;
  xml += "<Relationship";
  detail::appendAttribute(xml, "Id", toUtf8(relationship.getId()));
  detail::appendAttribute(xml, "Type", toUtf8(relationship.getType()));
  detail::appendAttribute(xml, "Target",
                          toUtf8(relationship.getTargetURI().toString() + entry.fragment));
  if (isExternal(relationship)) detail::appendAttribute(xml, "TargetMode", "External");
  xml += "/>";
}

detail::ElementSize sizeOf(const RelationshipSet::Entry& entry) {
  std::string xml;
  appendEntry(xml, entry);
  return {xml.size(), isExternal(entry.relationship) ? 5u : 4u};
}

constexpr std::string_view kEndOfDocument = "</Relationships>";

}  // namespace

RelationshipSet::RelationshipSet(std::string sourceItemName) : source_(std::move(sourceItemName)) {}

const Relationship* RelationshipSet::find(std::u16string_view id) const {
  const auto found = byId_.find(id);
  return found == byId_.end() ? nullptr : &found->second->relationship;
}

void RelationshipSet::indexTypes() {
  byType_.reserve(entries_.size());
  for (const Entry& entry : entries_) {
    byType_.push_back({hashOf(entry.relationship.getType()), &entry.relationship});
  }
  std::stable_sort(byType_.begin(), byType_.end(),
                   [](const Typed& a, const Typed& b) { return a.hash < b.hash; });
}

std::vector<Relationship> RelationshipSet::ofType(std::u16string_view type) {
  if (byType_.empty()) indexTypes();
  const std::uint64_t hash = hashOf(type);
  auto at = std::lower_bound(byType_.begin(), byType_.end(), hash,
                             [](const Typed& a, std::uint64_t wanted) { return a.hash < wanted; });
  std::vector<Relationship> found;
  for (; at != byType_.end() && at->hash == hash; ++at) {
    if (at->relationship->getType() == type) found.push_back(*at->relationship);
  }
  return found;
}

std::string RelationshipSet::describe(std::u16string_view id) const {
  return "relationship '" + toUtf8ForDisplay(id) + "' of " +
         (source_.empty() ? "the package" : "'/" + source_ + "'");
}

Exception RelationshipSet::unknownId(std::u16string_view id) const {
  return {ErrorCode::NotFound, describe(id) + ": there is none of that id"};
}

const Relationship& RelationshipSet::get(std::u16string_view id) const {
  const Relationship* found = find(id);
  if (found == nullptr) throw unknownId(id);
  return *found;
}

void RelationshipSet::addStored(Entry entry) {
  const std::u16string& id = entry.relationship.getId();
  if (byId_.contains(id)) throw FormatError("RL-4", describe(id) + ": there are two of that id");
  const bool isCore =
      source_.empty() && entry.relationship.getType() == kCorePropertiesRelationship;
  if (isCore && coreProperties_ != 0) {
    throw FormatError("CP-1", describe(id) + ": it is the second to core properties");
  }
  byType_.clear();
  const auto at = entries_.insert(entries_.end(), std::move(entry));
  byId_.emplace(at->relationship.getId(), at);
  if (isCore) ++coreProperties_;
}

std::u16string RelationshipSet::freshId(std::uint64_t& lastGenerated) const {
  std::u16string id;
  do {
    const std::string number = std::to_string(++lastGenerated);
    id = u"rId" + std::u16string(number.begin(), number.end());
  } while (isReservedId(id) || byId_.contains(id));
  return id;
}

detail::DocumentSize& RelationshipSet::size() {
  if (size_) return *size_;
  detail::DocumentSize size({startOfDocument().size() + kEndOfDocument.size(), 2});
  for (const Entry& entry : entries_) size.add(sizeOf(entry));
  return size_.emplace(size);
}

void RelationshipSet::checkNew(std::u16string_view id, std::u16string_view type,
                               TargetMode mode) const {
  constexpr std::size_t kShownOfId = 64;
  if (!detail::isReadableLength(detail::utf8Length(id))) {
    throw detail::unreadableLength(
        describe(std::u16string(id.substr(0, kShownOfId)) + u"...") + ": its id",
        detail::utf8Length(id));
  }
  if (!xercesc::XMLChar1_0::isValidNCName(id.data(), id.size())) {
    throw refused("RL-4", describe(id), "the id is not an XML name without a colon");
  }
  if (byId_.contains(id)) {
    throw FormatError("RL-4", describe(id) + ": the id is taken", ErrorCode::AlreadyExists);
  }
  if (trimXmlSpace(type).empty()) throw refused("RL-5", describe(id), "it has no type");
  requireText(type, "type");
  if (source_.empty() && type == kCorePropertiesRelationship && mode == TargetMode::External) {
    throw refused("CP-2", describe(id), "core properties lie in the package");
  }
}

void RelationshipSet::checkLengths(const Entry& entry) const {
  const Relationship& relationship = entry.relationship;
  const std::size_t type = detail::utf8Length(relationship.getType());
  if (!detail::isReadableLength(type)) {
    throw detail::unreadableLength(describe(relationship.getId()) + ": its type", type);
  }
  const std::size_t target = detail::utf8Length(relationship.getTargetURI().toString()) +
                             detail::utf8Length(entry.fragment);
  if (!detail::isReadableLength(target)) {
    throw detail::unreadableLength(describe(relationship.getId()) + ": its target", target);
  }
}

const Relationship& RelationshipSet::add(std::u16string_view type, URI target, TargetMode mode,
                                         std::u16string_view id, std::u16string fragment) {
  std::uint64_t lastGenerated = lastGenerated_;
  const std::u16string newId = id.empty() ? freshId(lastGenerated) : std::u16string(id);
  checkNew(newId, type, mode);
  Entry entry{Relationship(newId, std::u16string(type), std::move(target), mode),
              std::move(fragment), false};
  checkLengths(entry);
  const detail::ElementSize needed = sizeOf(entry);
  if (!size().hasRoomFor(needed)) throw detail::noRoom(describe(newId));

  addStored(std::move(entry));
  size().add(needed);
  lastGenerated_ = lastGenerated;
  changed_ = true;
  return entries_.back().relationship;
}

const Relationship& RelationshipSet::addInternal(std::u16string_view type, const URI& target,
                                                 std::u16string_view id) {
  detail::ResolvedTarget resolved = detail::resolveTarget(source_, target.toString());
  const std::string what = "internal target '" + toUtf8ForDisplay(target.toString()) + "'";
  if (resolved.corrected) throw refused("RL-8", what, "it is not spelled as a part name");
  if (resolved.name.isRelationshipsPartName()) {
    throw refused("RL-9", what, "it is a relationships part");
  }
  requireText(resolved.fragment, "target");
  return add(type, URI(fromUtf8(resolved.name.canonical())), TargetMode::Internal, id,
             std::move(resolved.fragment));
}

const Relationship& RelationshipSet::addExternal(std::u16string_view type, const URI& target,
                                                 std::u16string_view id) {
  requireText(target.toString(), "target");
  return add(type, target, TargetMode::External, id, {});
}

void RelationshipSet::remove(std::u16string_view id) {
  const auto found = byId_.find(id);
  if (found == byId_.end()) throw unknownId(id);
  const auto entry = found->second;
  if (source_.empty() && entry->relationship.getType() == kCorePropertiesRelationship) {
    --coreProperties_;
  }
  if (size_) size_->remove(sizeOf(*entry));
  byId_.erase(found);
  byType_.clear();
  entries_.erase(entry);
  changed_ = true;
}

std::string RelationshipSet::toXml() const {
  std::string xml = startOfDocument();
  for (const Entry& entry : entries_) appendEntry(xml, entry);
  return xml += kEndOfDocument;
}

RelationshipSet RelationshipSet::read(std::string sourceItemName, InputStream& stream,
                                      FaultSink& faults) {
  RelationshipSet set(std::move(sourceItemName));
  detail::readRelationships(stream, set, faults);
  return set;
}

}  // namespace opc::model
