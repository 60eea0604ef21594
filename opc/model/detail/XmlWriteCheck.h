// SPDX-License-Identifier: MIT
#pragma once

#include <xercesc/dom/DOM.hpp>

namespace opc::model::detail {

/// Refuses a DOM document whose serialised form would not read back as the same document: text that
/// XML cannot carry (the serializer lets it through in CDATA sections, instructions and namespace
/// names), a missing document element, and what goes beyond the limits of reading.
///
/// Throws InvalidXMLDocument that names the element and, if it is one, the attribute.
void checkBeforeWriting(const xercesc::DOMDocument& document);

}  // namespace opc::model::detail
