// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "opc/HashIndex.h"
#include "opc/interfaces/IPhysicalPackage.h"
#include "opc/model/ContentTypes.h"
#include "opc/model/FaultSink.h"
#include "opc/model/Part.h"
#include "opc/model/PieceSequences.h"
#include "opc/model/RelationshipSet.h"
#include "opc/model/detail/FolderSet.h"

namespace opc::model {

/// What an item, or a sequence of pieces, is to the package.
enum class ItemRole : std::uint8_t {
  Hidden,  ///< removed, or none of the below
  Stray,   ///< no part by its name or kind: ignored
  Part,
  Untyped,        ///< has a part's name and no content type, which makes it no part
  Relationships,  ///< a relationships part
};

/// The items of a physical package by part name, without a copy of any name.
///
/// An id is the index of the part's item; parts in pieces have ids from kFirstSequence on. A part
/// keeps its id when another item takes the place of its own.
class PartIndex {
 public:
  static constexpr PartId kFirstSequence = PartId{1} << 31;

  explicit PartIndex(interfaces::IPhysicalPackage& physical) : physical_(physical) {}

  /// Takes in the whole directory. Names that are equal or derived from each other, and what
  /// contradicts the content types, go to `faults`.
  void load(const ContentTypes& types, FaultSink& faults = FaultSink::refusing());

  /// By the name of an item in any spelling, whatever the role.
  std::optional<PartId> find(std::string_view itemName) const;
  ItemRole role(PartId part) const;
  std::string_view name(PartId part) const;  ///< of the item, as stored; without piece suffix

  bool isInPieces(PartId part) const { return part >= kFirstSequence; }
  interfaces::ItemIndex item(PartId part) const;  ///< of a part that is not in pieces
  const std::vector<interfaces::ItemIndex>& pieces(PartId part) const;

  /// Whether a part's name extends `itemName` by further segments.
  bool hasPartBelow(std::string_view itemName) const;
  /// The name of the part that `itemName` extends, or "".
  std::string_view partAbove(std::string_view itemName) const;

  /// Takes in an item that was added. Its name must be new.
  PartId add(interfaces::ItemIndex item, ItemRole role);
  /// Makes `item` the item of a part; what was there before is removed from the container.
  void replaceItem(PartId part, interfaces::ItemIndex item);
  /// Removes the part, and its items from the container.
  void remove(PartId part);

  /// Relationships parts without a source.
  std::vector<PartId> orphans() const;
  /// Removes strays, and orphans, from the container.
  void removeNonParts();

  /// Calls `visit` for all of that role: items in the container's order, then sequences.
  template <typename Visit>
  void forEach(ItemRole role, const Visit& visit) const {
    const std::size_t items = roles_.size();
    for (PartId part = 0; part < items; ++part) {
      if (roles_[part] == role) visit(part);
    }
    const std::size_t sequences = sequences_.size();
    for (std::size_t i = 0; i < sequences; ++i) {
      if (sequences_[i].role == role) visit(kFirstSequence + i);
    }
  }

  /// Whether a default for this extension would make a part of something that is none.
  bool isUntypedExtension(std::string_view extension) const;

 private:
  class Loader;
  struct Sequence {
    std::string_view name;
    std::vector<interfaces::ItemIndex> items;
    ItemRole role;
  };

  const std::uint32_t* lookUp(std::uint64_t hash, std::string_view itemName) const;
  void setRole(PartId part, ItemRole role);
  void noteUntypedExtension(std::string_view itemName);

  interfaces::IPhysicalPackage& physical_;
  HashIndex<std::uint32_t> parts_;
  detail::FolderSet folders_;
  std::vector<ItemRole> roles_;
  std::vector<Sequence> sequences_;
  std::unordered_map<PartId, interfaces::ItemIndex> replaced_;
  std::vector<PartId> orphans_;              // as they were when it was loaded
  std::set<std::string> untypedExtensions_;  // folded
};

/// The item that an internal relationship leads to, whatever its role; nothing when there is none.
std::optional<PartId> findTarget(const PartIndex& index, const Relationship& relationship);

/// A target that is not there may come later; one that is there and has no content type, which
/// makes it no part, breaks CT-10.
void checkTargetTypes(const PartIndex& index, const RelationshipSet& set, FaultSink& faults);

}  // namespace opc::model
