// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <xercesc/dom/DOM.hpp>

#include "opc/Text.h"
#include "opc/model/FormatConstants.h"

namespace opc::model {

/// Text of a DOM node; null, as Xerces-C gives for what is absent, is "".
inline std::u16string_view domText(const XMLCh* text) {
  return text == nullptr ? std::u16string_view() : std::u16string_view(text);
}

/// The name as the document spells it, for messages.
inline std::string domName(const xercesc::DOMNode& node) {
  return toUtf8ForDisplay(domText(node.getNodeName()));
}

inline std::u16string_view domNamespace(const xercesc::DOMNode& node) {
  return domText(node.getNamespaceURI());
}

/// Without its prefix.
inline std::u16string_view domLocalName(const xercesc::DOMNode& node) {
  const XMLCh* local = node.getLocalName();
  return domText(local != nullptr ? local : node.getNodeName());
}

inline bool isNamespaceDeclaration(const xercesc::DOMNode& attribute) {
  return domNamespace(attribute) == kXmlnsNamespace;
}

inline bool isTextNode(const xercesc::DOMNode& node) {
  return node.getNodeType() == xercesc::DOMNode::TEXT_NODE ||
         node.getNodeType() == xercesc::DOMNode::CDATA_SECTION_NODE;
}

inline bool isElementNode(const xercesc::DOMNode& node) {
  return node.getNodeType() == xercesc::DOMNode::ELEMENT_NODE;
}

inline bool isXmlSpace(char16_t c) {
  return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n';
}

inline std::u16string_view trimXmlSpace(std::u16string_view text) {
  while (!text.empty() && isXmlSpace(text.front())) text.remove_prefix(1);
  while (!text.empty() && isXmlSpace(text.back())) text.remove_suffix(1);
  return text;
}

}  // namespace opc::model
