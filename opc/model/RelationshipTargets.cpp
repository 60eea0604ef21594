// SPDX-License-Identifier: MIT
#include "opc/model/RelationshipTargets.h"

#include "opc/Text.h"

namespace opc::model {

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
