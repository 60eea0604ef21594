// SPDX-License-Identifier: MIT
#pragma once

#include "opc/Streams.h"
#include "opc/model/FaultSink.h"
#include "opc/model/RelationshipSet.h"

namespace opc::model::detail {

/// Adds to `set` what markup compatibility leaves of a relationships part.
void readRelationships(InputStream& stream, RelationshipSet& set, FaultSink& faults);

}  // namespace opc::model::detail
