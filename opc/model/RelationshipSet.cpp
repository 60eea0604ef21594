// SPDX-License-Identifier: MIT
#include "opc/model/RelationshipSet.h"

#include <iterator>
#include <utility>
#include <xercesc/util/XMLChar.hpp>

#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/model/FormatConstants.h"
#include "opc/model/PartName.h"
#include "opc/model/TargetResolution.h"
#include "opc/model/XmlWriting.h"

namespace opc::model {
namespace {

// Ids that an add-on's screenshot and thumbnail are known by.
bool isReservedId(std::u16string_view id) {
  return id == u"rId100" || id == u"rId101";
}

void requireText(std::u16string_view text, const char* what) {
  if (isXmlText(text)) return;
  throw Exception(ErrorCode::InvalidText, std::string("relationship ") + what + " '" +
                                              toUtf8ForDisplay(text) +
                                              "': it holds characters that XML cannot carry");
}

FormatError refused(std::string rule, const std::string& what, const char* why) {
  return {std::move(rule), what + ": " + why, ErrorCode::InvalidArgument};
}

}  // namespace

RelationshipSet::RelationshipSet(std::string sourceItemName) : source_(std::move(sourceItemName)) {}

const Relationship* RelationshipSet::find(std::u16string_view id) const {
  const auto found = byId_.find(id);
  return found == byId_.end() ? nullptr : &found->second->relationship;
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
  const auto at = entries_.insert(entries_.end(), std::move(entry));
  byId_.emplace(at->relationship.getId(), at);
  if (isCore) ++coreProperties_;
}

std::u16string RelationshipSet::freshId() {
  std::u16string id;
  do {
    const std::string number = std::to_string(++lastGenerated_);
    id = u"rId" + std::u16string(number.begin(), number.end());
  } while (isReservedId(id) || byId_.contains(id));
  return id;
}

const Relationship& RelationshipSet::add(std::u16string_view type, URI target, TargetMode mode,
                                         std::u16string_view id) {
  const std::u16string newId = id.empty() ? freshId() : std::u16string(id);
  if (!xercesc::XMLChar1_0::isValidNCName(newId.data(), newId.size())) {
    throw refused("RL-4", describe(newId), "the id is no XML name without colon");
  }
  if (byId_.contains(newId)) {
    throw FormatError("RL-4", describe(newId) + ": the id is taken", ErrorCode::AlreadyExists);
  }
  if (type.empty()) throw refused("RL-5", describe(newId), "it has no type");
  requireText(type, "type");
  if (source_.empty() && type == kCorePropertiesRelationship && mode == TargetMode::External) {
    throw refused("CP-2", describe(newId), "core properties lie in the package");
  }
  addStored({Relationship(newId, std::u16string(type), std::move(target), mode), {}, false});
  changed_ = true;
  return entries_.back().relationship;
}

const Relationship& RelationshipSet::addInternal(std::u16string_view type, const URI& target,
                                                 std::u16string_view id) {
  ResolvedTarget resolved = resolveTarget(source_, target.toString());
  const std::string what = "internal target '" + toUtf8ForDisplay(target.toString()) + "'";
  if (resolved.mended) throw refused("RL-8", what, "it is not spelled as a part name");
  if (resolved.name.isRelationshipsPartName()) {
    throw refused("RL-9", what, "it is a relationships part");
  }
  requireText(resolved.fragment, "target");
  const Relationship& added =
      add(type, URI(fromUtf8(resolved.name.canonical())), TargetMode::Internal, id);
  entries_.back().fragment = std::move(resolved.fragment);
  return added;
}

const Relationship& RelationshipSet::addExternal(std::u16string_view type, const URI& target,
                                                 std::u16string_view id) {
  requireText(target.toString(), "target");
  return add(type, target, TargetMode::External, id);
}

void RelationshipSet::remove(std::u16string_view id) {
  const auto found = byId_.find(id);
  if (found == byId_.end()) throw unknownId(id);
  const auto entry = found->second;
  if (source_.empty() && entry->relationship.getType() == kCorePropertiesRelationship) {
    --coreProperties_;
  }
  byId_.erase(found);
  entries_.erase(entry);
  changed_ = true;
}

std::string RelationshipSet::toXml() const {
  std::string xml(kXmlDeclaration);
  xml += "<Relationships";
  appendAttribute(xml, "xmlns", toUtf8(kRelationshipsNamespace));
  xml += '>';
  for (const Entry& entry : entries_) {
    const Relationship& relationship = entry.relationship;
    xml += "<Relationship";
    appendAttribute(xml, "Id", toUtf8(relationship.getId()));
    appendAttribute(xml, "Type", toUtf8(relationship.getType()));
    appendAttribute(xml, "Target", toUtf8(relationship.getTargetURI().toString() + entry.fragment));
    if (relationship.getTargetMode() == TargetMode::External) {
      appendAttribute(xml, "TargetMode", "External");
    }
    xml += "/>";
  }
  return xml += "</Relationships>";
}

}  // namespace opc::model
