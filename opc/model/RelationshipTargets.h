// SPDX-License-Identifier: MIT
#pragma once

#include <optional>

#include "opc/model/FaultSink.h"
#include "opc/model/PartIndex.h"
#include "opc/model/RelationshipSet.h"

namespace opc::model {

/// The item that an internal relationship leads to, whatever its role; nothing when there is none.
std::optional<PartId> findTarget(const PartIndex& index, const Relationship& relationship);

/// A target that is not there may come later; one that is there and has no content type, which
/// makes it no part, breaks CT-10.
void checkTargetTypes(const PartIndex& index, const RelationshipSet& set, FaultSink& faults);

}  // namespace opc::model
