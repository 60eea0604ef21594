// SPDX-License-Identifier: MIT
#pragma once

#include <xercesc/dom/DOM.hpp>

#include "opc/model/FaultSink.h"
#include "opc/plservices/CorePropertiesPart.h"

namespace opc::plservices::detail {

/// Fills `part` from the root element of a core properties part.
void readCoreProperties(const xercesc::DOMElement& root, CorePropertiesPart& part,
                        model::FaultSink& faults);

}  // namespace opc::plservices::detail
