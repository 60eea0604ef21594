// SPDX-License-Identifier: MIT
#include <algorithm>
#include <utility>

#include "opc/Exception.h"
#include "opc/model/FormatConstants.h"
#include "opc/model/detail/DocumentSize.h"
#include "opc/model/detail/MemoryContentSource.h"
#include "opc/model/detail/PackageState.h"

namespace opc::model {

using interfaces::ItemIndex;

namespace {

const ContentType& relationshipsType() {
  static const ContentType kType = ContentType::fromAscii(kRelationshipsType);
  return kType;
}

}  // namespace

bool Package::State::isChanged() const {
  return changed_ || mode_ == interfaces::OpenMode::Create || types_.isChanged() ||
         relationshipsOfPackage_->isChanged() ||
         std::any_of(relationships_.begin(), relationships_.end(),
                     [](const auto& entry) { return entry.second.isChanged(); });
}

void Package::State::stage() {
  if (!isChanged()) return;
  for (const PartId orphan : index_.orphans()) types_.removeOverride(index_.name(orphan));
  index_.dropWhatIsNoPart();
  requireRelationshipsNames();
  // A default would make parts of items that have that extension and no type.
  if (types_.findDefault(kRelationshipsExtension) == nullptr &&
      !index_.isUntypedExtension(kRelationshipsExtension)) {
    types_.addDefault(kRelationshipsExtension, relationshipsType());
  }
  for (auto& [part, set] : relationships_) {
    if (!set.isChanged()) continue;
    settleRelationshipsItem(name(part), set);
    stageRelationships(name(part), set, false);
  }
  stageFront();
}

// A part may have come since the relationship did.
void Package::State::requireRelationshipsNames() const {
  const auto check = [this](std::string_view source, const RelationshipSet& set) {
    if (set.isChanged() && !set.entries().empty()) requireRelationshipsName(source);
  };
  check({}, *relationshipsOfPackage_);
  for (const auto& [part, set] : relationships_) check(name(part), set);
}

// What a reader wants first stands first: the content types, then the package's relationships.
void Package::State::stageFront() {
  if (relationshipsOfPackage_->isChanged()) settleRelationshipsItem({}, *relationshipsOfPackage_);
  const bool newTypes = types_.isChanged() || contentTypesItems_.empty();
  if (newTypes) {
    const ItemIndex added = addText(kContentTypesItem, types_.toXml(), true);
    for (const ItemIndex old : std::exchange(contentTypesItems_, {added})) {
      physical_.removeItem(old);
    }
    types_.setUnchanged();
  }
  if (relationshipsOfPackage_->isChanged() || (newTypes && relationshipsStaged_)) {
    stageRelationships({}, *relationshipsOfPackage_, true);
    relationshipsStaged_ = true;
  }
}

// Whether there is an item decides on its content type, so this comes before those are written.
void Package::State::settleRelationshipsItem(std::string_view sourceItemName,
                                             const RelationshipSet& set) {
  if (set.entries().empty()) return removeRelationshipsItem(sourceItemName);
  const std::string itemName = relationshipsItemName(sourceItemName);
  const ContentType* type = types_.find(itemName);
  if (type == nullptr || !(*type == relationshipsType())) {
    types_.assign(itemName, relationshipsType(), false);
  }
}

void Package::State::stageRelationships(std::string_view sourceItemName, RelationshipSet& set,
                                        bool atFront) {
  if (!set.entries().empty()) {
    const std::string itemName = relationshipsItemName(sourceItemName);
    const ItemIndex added = addText(itemName, set.toXml(), atFront);
    if (const std::optional<PartId> old = index_.find(itemName)) {
      index_.replaceItem(*old, added);
    } else {
      index_.add(added, ItemRole::Relationships);
    }
  }
  set.setUnchanged();
}

ItemIndex Package::State::addText(std::string_view itemName, std::string text, bool atFront) {
  interfaces::NewItem item;
  item.name = canonicalItemName(itemName);
  item.atFront = atFront;
  detail::requireReadableDocument(
      text, "cannot write '/" + item.name + "' of '" + physical_.description() + "'");
  return physical_.addItem(
      item, std::make_unique<detail::MemoryContentSource>(std::move(text), "/" + item.name));
}

}  // namespace opc::model
