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

/// A part as XML, with the lines of its elements.
class DocumentText {
 public:
  /// Throws InvalidXMLDocument, opc::Exception with ErrorCode::TooLarge for a part that is too
  /// large for a document, and what reading the part throws.
  DocumentText(opc::model::Package& package, opc::model::PartId part);

  const xercesc::DOMElement* root() const { return root_; }
  /// The line of an element's start tag, from 1. The first call scans the whole document.
  std::size_t lineOf(const xercesc::DOMElement* element);

 private:
  void findLines();

  opc::ByteBuffer bytes_;
  opc::model::ParserPointer parser_;
  const xercesc::DOMElement* root_;
  std::vector<std::pair<const xercesc::DOMElement*, std::size_t>> lines_;  // by address
};

/// The next element in document order among `top` and its descendants; null at the end. Documents
/// may be deep, so this does not recurse.
const xercesc::DOMElement* nextElement(const xercesc::DOMElement* element,
                                       const xercesc::DOMElement* top);

}  // namespace addon::checks::detail
