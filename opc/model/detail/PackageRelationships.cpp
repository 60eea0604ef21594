// SPDX-License-Identifier: MIT
// Relationships parts as a commit would leave them.
#include <algorithm>

#include "opc/Exception.h"
#include "opc/model/FormatConstants.h"
#include "opc/model/detail/PackageState.h"

namespace opc::model {

const RelationshipSet* Package::State::changedSet(std::string_view sourceItemName) const {
  if (sourceItemName.empty()) {
    return relationshipsOfPackage_->isChanged() ? &*relationshipsOfPackage_ : nullptr;
  }
  const std::optional<PartId> part = findPart(sourceItemName);
  const auto found = part ? relationships_.find(*part) : relationships_.end();
  return found != relationships_.end() && found->second.isChanged() ? &found->second : nullptr;
}

std::vector<RelationshipsItem> Package::State::relationshipsItems() const {
  std::vector<RelationshipsItem> items;
  std::vector<PartId> orphans = index_.orphans();
  std::sort(orphans.begin(), orphans.end());
  index_.forEach(ItemRole::Relationships, [&](PartId item) {
    if (std::binary_search(orphans.begin(), orphans.end(), item)) return;
    const RelationshipSet* changed = changedSet(sourceOfRelationships(name(item)));
    if (changed == nullptr) {
      items.push_back({std::string(name(item)), item});
    } else if (!changed->entries().empty()) {
      items.push_back({std::string(name(item)), std::nullopt});
    }
  });
  const auto addNew = [&](std::string_view source, const RelationshipSet& set) {
    std::string itemName = relationshipsItemName(source);
    if (!set.isChanged() || set.entries().empty() || index_.find(itemName)) return;
    items.push_back({std::move(itemName), std::nullopt});
  };
  addNew({}, *relationshipsOfPackage_);
  for (const auto& [part, set] : relationships_) addNew(name(part), set);
  return items;
}

ContentType Package::State::typeOfRelationshipsItem(std::string_view itemName) const {
  const ContentType* type = types_.find(itemName);
  return type == nullptr ? ContentType::fromAscii(kRelationshipsType) : *type;
}

std::unique_ptr<InputStream> Package::State::openRelationshipsItem(
    std::string_view itemName) const {
  if (const RelationshipSet* changed = changedSet(sourceOfRelationships(itemName))) {
    return std::make_unique<TextInputStream>(changed->toXml());
  }
  const std::optional<PartId> item = index_.find(itemName);
  return inContext([&] { return readingContext(itemName); },
                   [&] {
                     if (!item) throw Exception(ErrorCode::NotFound, "it is not there");
                     return openRaw(*item);
                   });
}

}  // namespace opc::model
