// SPDX-License-Identifier: MIT
#include "addon/checks/detail/Destination.h"

#include "opc/Text.h"
#include "opc/model/PartName.h"

namespace addon::checks::detail {

using opc::model::PartName;
using opc::model::TargetMode;
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
  if (found.front().getTargetMode() != TargetMode::Internal) return destination;
  destination.kind = Kind::Missing;
  const PartName name(target);
  if (!package.hasPart(name)) return destination;
  destination.part = package.getPart(name);
  destination.name = destination.part->getName().canonical();
  destination.kind = Kind::Part;
  return destination;
}

}  // namespace addon::checks::detail
