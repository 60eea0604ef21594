// SPDX-License-Identifier: MIT
#include <string>

#include "opc/Text.h"
#include "opc/checks/detail/Packaging.h"
#include "opc/model/PartName.h"
#include "opc/model/PieceSequences.h"

namespace opc::checks::detail {

using interfaces::ItemIndex;
using interfaces::ItemInfo;
using interfaces::ItemKind;
using model::ItemRole;
using model::PartId;

namespace {

// Such as "[00].piece", which occurs in no valid sequence.
bool looksLikePiece(std::string_view itemName) {
  const std::string_view last = itemName.substr(itemName.rfind('/') + 1);
  return last.starts_with('[') && toLowerAscii(last).ends_with(".piece");
}

std::string whyNoPiece(std::string_view itemName) {
  const auto piece = model::parsePieceName(itemName);
  const auto* fault = piece ? model::findNameFault(piece->whole) : nullptr;
  if (fault == nullptr) return "the number of the piece does not complete a part";
  return std::string("the name before the piece is not a valid part name: ") + fault->why;
}

void checkStray(Packaging& packaging, ItemIndex item) {
  const ItemInfo info = packaging.container.itemInfo(item);
  if (info.kind != ItemKind::File || packaging.container.state(item).hasBadName) return;
  if (packaging.ambiguous.contains(item)) return;
  if (looksLikePiece(info.name)) {
    return packaging.report.addClipped(kIncompletePieces, info.name, whyNoPiece(info.name), "IL-4");
  }
  const model::NameFault* fault = model::findNameFault(info.name);
  const std::string why = fault != nullptr ? fault->why : "it cannot be the name of a part";
  packaging.report.addClipped(kStrayItem, info.name, "the name is not a valid part name: " + why,
                              "PN-11");
}

}  // namespace

void checkPartNames(Packaging& packaging) {
  NamesSink sink(packaging);
  packaging.index.load(packaging.types, sink);
  for (const PartId part : packaging.index.orphans()) {
    packaging.add(kOrphanRelationships, part,
                  "the part whose relationships it contains is not in the package", "RL-12");
  }
}

void checkStrayItems(Packaging& packaging) {
  packaging.index.forEach(ItemRole::Stray, [&](PartId item) { checkStray(packaging, item); });
  if (!packaging.areTypesKnown || packaging.areTypesEmpty) return;
  packaging.index.forEach(ItemRole::Untyped, [&](PartId part) {
    if (packaging.relatedUntyped.contains(part)) return;
    if (packaging.ambiguous.contains(packaging.itemsOf(part).front())) return;
    packaging.add(kStrayItem, part, "it has no content type", "CT-10");
  });
}

}  // namespace opc::checks::detail
