// SPDX-License-Identifier: MIT
#pragma once

#include <xercesc/dom/DOM.hpp>

#include "opc/model/ContentTypes.h"
#include "opc/model/FaultSink.h"

namespace opc::model::detail {

/// Adds the entries below the root element of a content types stream to `types`.
void readContentTypes(const xercesc::DOMElement& root, ContentTypes& types, FaultSink& faults);

}  // namespace opc::model::detail
