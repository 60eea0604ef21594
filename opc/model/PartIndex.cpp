// SPDX-License-Identifier: MIT
#include "opc/model/PartIndex.h"

#include <string>

#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/model/NameKey.h"
#include "opc/model/detail/FolderSet.h"

namespace opc::model {

using interfaces::ItemIndex;

const std::uint32_t* PartIndex::lookUp(std::uint64_t hash, std::string_view itemName) const {
  return parts_.find(hash, [&](std::uint32_t part) { return equalKeys(name(part), itemName); });
}

std::optional<PartId> PartIndex::find(std::string_view itemName) const {
  const std::uint32_t* part = lookUp(nameHash(itemName), itemName);
  if (part == nullptr) return std::nullopt;
  return *part;
}

ItemRole PartIndex::role(PartId part) const {
  if (isInPieces(part)) {
    const std::size_t sequence = part - kFirstSequence;
    return sequence < sequences_.size() ? sequences_[sequence].role : ItemRole::Hidden;
  }
  return part < roles_.size() ? roles_[part] : ItemRole::Hidden;
}

void PartIndex::setRole(PartId part, ItemRole role) {
  if (isInPieces(part)) {
    sequences_[part - kFirstSequence].role = role;
    return;
  }
  if (part >= roles_.size()) roles_.resize(part + 1, ItemRole::Hidden);
  roles_[part] = role;
}

std::string_view PartIndex::name(PartId part) const {
  if (isInPieces(part)) return sequences_[part - kFirstSequence].name;
  return physical_.itemName(item(part));
}

ItemIndex PartIndex::item(PartId part) const {
  if (replaced_.empty()) return part;
  const auto found = replaced_.find(part);
  return found == replaced_.end() ? part : found->second;
}

const std::vector<ItemIndex>& PartIndex::pieces(PartId part) const {
  return sequences_[part - kFirstSequence].items;
}

bool PartIndex::hasPartBelow(std::string_view itemName) const {
  return folders_.find(nameHash(itemName), itemName) != nullptr;
}

std::string_view PartIndex::partAbove(std::string_view itemName) const {
  const detail::FolderPath path(itemName);
  for (auto step = path.steps().rbegin(); step != path.steps().rend(); ++step) {
    const std::string_view folder = itemName.substr(0, step->length);
    // A folder that parts lie in, and those above it, are known to be no parts.
    if (folders_.find(step->hash, folder) != nullptr) return {};
    const std::uint32_t* part = lookUp(step->hash, folder);
    if (part != nullptr && role(*part) != ItemRole::Untyped) return name(*part);
  }
  return {};
}

PartId PartIndex::add(ItemIndex item, ItemRole role) {
  if (item >= kFirstSequence) throw Exception(ErrorCode::TooLarge, "the package: too many items");
  setRole(item, role);
  const std::string_view itemName = physical_.itemName(item);
  parts_.insert(nameHash(itemName), static_cast<std::uint32_t>(item));
  folders_.add(itemName);
  return item;
}

void PartIndex::replaceItem(PartId part, ItemIndex item) {
  if (isInPieces(part)) {
    // The sequence keeps its place; its one piece is now the whole.
    Sequence& sequence = sequences_[part - kFirstSequence];
    for (const ItemIndex piece : sequence.items) physical_.removeItem(piece);
    sequence.items.assign(1, item);
    return;
  }
  const ItemIndex old = this->item(part);
  replaced_[part] = item;
  physical_.removeItem(old);
}

void PartIndex::remove(PartId part) {
  const std::string_view itemName = name(part);
  parts_.erase(nameHash(itemName), [part](std::uint32_t other) { return other == part; });
  if (role(part) != ItemRole::Untyped) folders_.remove(itemName);
  setRole(part, ItemRole::Hidden);
  if (isInPieces(part)) {
    for (const ItemIndex piece : pieces(part)) physical_.removeItem(piece);
  } else {
    physical_.removeItem(item(part));
    replaced_.erase(part);
  }
}

std::vector<PartId> PartIndex::orphans() const {
  std::vector<PartId> result;
  for (const PartId part : orphans_) {
    if (role(part) == ItemRole::Relationships) result.push_back(part);
  }
  return result;
}

void PartIndex::removeNonParts() {
  forEach(ItemRole::Stray, [this](PartId item) {
    physical_.removeItem(item);
    setRole(item, ItemRole::Hidden);
  });
  for (const PartId part : orphans()) remove(part);
  orphans_.clear();
}

void PartIndex::noteUntypedExtension(std::string_view itemName) {
  untypedExtensions_.insert(toLowerAscii(canonicalItemName(extensionOf(itemName))));
}

bool PartIndex::isUntypedExtension(std::string_view extension) const {
  return untypedExtensions_.contains(toLowerAscii(canonicalItemName(extension)));
}

std::optional<PartId> findTarget(const PartIndex& index, const Relationship& relationship) {
  if (relationship.getTargetMode() == TargetMode::External) return std::nullopt;
  return index.find(relationship.targetName().itemName());
}

void checkTargetTypes(const PartIndex& index, const RelationshipSet& set, FaultSink& faults) {
  for (const RelationshipSet::Entry& entry : set.entries()) {
    const Relationship& relationship = entry.relationship;
    const std::optional<PartId> item = findTarget(index, relationship);
    if (!item || index.role(*item) != ItemRole::Untyped) continue;
    faults.add(
        FormatError("CT-10", "relationship '" + toUtf8(relationship.getId()) + "': its target '" +
                                 toUtf8(relationship.getTargetURI().toString()) +
                                 "' has no content type"),
        index.name(*item));
  }
}

}  // namespace opc::model
