// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <xercesc/dom/DOM.hpp>

namespace addon::packaging {

/// Appends the element `name` with a text to `parent`.
void appendTextElement(xercesc::DOMElement* parent, const std::u16string& namespaceURI,
                       const std::u16string& name, const std::u16string& text);

/// The text of the first child element `name`. Without that element `text` keeps what it holds.
void readChildText(const xercesc::DOMElement* parent, std::u16string_view name,
                   std::u16string& text);

}  // namespace addon::packaging
