// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <utility>
#include <vector>
#include <xercesc/dom/DOM.hpp>

#include "opc/ByteBuffer.h"
#include "opc/model/Package.h"
#include "opc/model/XercesHelper.h"

namespace addon::checks::detail {

/// One part as XML, and the lines on which its elements stand.
class DocumentText {
 public:
  /// Throws InvalidXMLDocument, opc::Exception with ErrorCode::TooLarge for a part that is too long
  /// for a document, and what reading the part throws.
  DocumentText(opc::model::Package& package, opc::model::PartId part);

  const xercesc::DOMElement* root() const { return root_; }
  /// The line of an element's start tag, from 1. The first call goes through the whole document.
  std::size_t lineOf(const xercesc::DOMElement* element);

 private:
  void findLines();

  opc::model::XercesGuard guard_;  // first made, last gone
  opc::ByteBuffer bytes_;
  opc::model::ParserPointer parser_;
  const xercesc::DOMElement* root_;
  std::vector<std::pair<const xercesc::DOMElement*, std::size_t>> lines_;  // by address
};

/// The element that follows in the document's order among `top` and all that is below it; null at
/// the end. Elements are as many and as deep as a document likes, so nothing here recurses.
const xercesc::DOMElement* nextElement(const xercesc::DOMElement* element,
                                       const xercesc::DOMElement* top);

}  // namespace addon::checks::detail
