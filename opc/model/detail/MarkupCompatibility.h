// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>
#include <vector>
#include <xercesc/dom/DOM.hpp>

namespace opc::model::detail {

/// Receives what markup compatibility leaves of a document, in document order.
class MarkupConsumer {
 public:
  virtual ~MarkupConsumer() = default;

  /// `attributes` without namespace declarations and without what is ignored.
  virtual void startElement(const xercesc::DOMElement& element,
                            const std::vector<const xercesc::DOMNode*>& attributes) = 0;
  virtual void endElement() = 0;
  virtual void characters(std::u16string_view text) = 0;
};

/// Applies markup compatibility (ISO/IEC 29500-3) below and with `root` for a reader that
/// understands one namespace only. Ignorable elements and attributes are left out,
/// AlternateContent is replaced by the branch that applies. Throws FormatError (RL-13) for what
/// must be understood and is not, and for markup that breaks the rules of compatibility.
void processMarkup(const xercesc::DOMElement& root, std::u16string_view understoodNamespace,
                   MarkupConsumer& consumer);

}  // namespace opc::model::detail
