// SPDX-License-Identifier: MIT
#include "addon/checks/detail/ReadableDocument.h"

#include <utility>

#include "opc/Text.h"
#include "opc/model/PartName.h"

namespace addon::checks::detail {

using Kind = Destination::Kind;

Destination follow(opc::model::Package& package, std::u16string_view relationshipType) {
  const auto found = package.getRelationshipsByType(relationshipType);
  Destination destination;
  destination.count = found.size();
  if (found.empty()) return destination;
  destination.kind = Kind::Several;
  if (found.size() > 1) return destination;
  const std::u16string target = found.front().getTargetURI().toString();
  destination.name = opc::toUtf8ForDisplay(target);
  destination.kind = Kind::Outside;
  if (found.front().getTargetMode() != opc::model::TargetMode::Internal) return destination;
  destination.kind = Kind::Missing;
  const opc::model::PartName name(target);
  if (!package.hasPart(name)) return destination;
  destination.part = package.getPart(name);
  destination.name = destination.part->getName().canonical();
  destination.kind = Kind::Part;
  return destination;
}

ReadableDocument::ReadableDocument(packaging::AddonPackage& package,
                                   const packaging::DocumentTable& table)
    : schema_(schemaOf(table)) {
  Destination found = follow(package.logicalPackage(), schema_.relationshipType);
  if (found.kind != Kind::Part) return;
  part_ = std::move(found.name);
  isReadable([&] { text_.emplace(package.logicalPackage(), found.part->id()); });
}

}  // namespace addon::checks::detail
