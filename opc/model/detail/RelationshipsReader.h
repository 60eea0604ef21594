// SPDX-License-Identifier: MIT
#pragma once

#include <xercesc/dom/DOM.hpp>

#include "opc/model/FaultSink.h"
#include "opc/model/RelationshipSet.h"

namespace opc::model::detail {

/// Adds to `set` what markup compatibility leaves of a relationships part with this root element.
void readRelationships(const xercesc::DOMElement& root, RelationshipSet& set, FaultSink& faults);

}  // namespace opc::model::detail
