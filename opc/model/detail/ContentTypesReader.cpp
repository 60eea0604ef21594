// SPDX-License-Identifier: MIT
#include "opc/model/detail/ContentTypesReader.h"

#include "opc/Exception.h"
#include "opc/model/DomText.h"
#include "opc/model/PartName.h"

namespace opc::model::detail {
namespace {

using xercesc::DOMElement;
using xercesc::DOMNode;

std::string quoted(const DOMNode& node) {
  return "'" + domName(node) + "'";
}

// The rule that an attribute without a place breaks.
const char* foreignAttributeRule(const DOMNode& attribute, const char* ownRule) {
  const std::u16string_view space = domNamespace(attribute);
  if (space == kXmlNamespace || space == kSchemaInstanceNamespace) return "XM-4";
  return space.empty() ? ownRule : "CT-13";
}

void checkRoot(const DOMElement& root) {
  if (domNamespace(root) != kContentTypesNamespace || domLocalName(root) != u"Types") {
    throw FormatError("CT-2", "root element " + quoted(root) +
                                  ": it is not 'Types' of the content types namespace");
  }
}

void checkRootAttributes(const DOMElement& root) {
  const xercesc::DOMNamedNodeMap* attributes = root.getAttributes();
  for (XMLSize_t i = 0; i < attributes->getLength(); ++i) {
    const DOMNode& attribute = *attributes->item(i);
    if (isNamespaceDeclaration(attribute)) continue;
    throw FormatError(foreignAttributeRule(attribute, "CT-2"),
                      "attribute " + quoted(attribute) + ": the root element takes none");
  }
}

// The two attributes of an entry.
struct EntryAttributes {
  std::u16string_view key;
  std::u16string_view type;
};

EntryAttributes readAttributes(const DOMElement& element, std::u16string_view keyName) {
  const XMLCh* key = nullptr;
  const XMLCh* type = nullptr;
  const xercesc::DOMNamedNodeMap* attributes = element.getAttributes();
  for (XMLSize_t i = 0; i < attributes->getLength(); ++i) {
    const DOMNode& attribute = *attributes->item(i);
    if (isNamespaceDeclaration(attribute)) continue;
    const bool own = domNamespace(attribute).empty();
    if (own && domLocalName(attribute) == keyName) {
      key = attribute.getNodeValue();
    } else if (own && domLocalName(attribute) == u"ContentType") {
      type = attribute.getNodeValue();
    } else {
      throw FormatError(
          foreignAttributeRule(attribute, "CT-3"),
          "attribute " + quoted(attribute) + ": element " + quoted(element) + " does not take it");
    }
  }
  if (key == nullptr || type == nullptr) {
    throw FormatError("CT-3", "element " + quoted(element) + ": it lacks the attribute '" +
                                  toUtf8ForDisplay(key == nullptr ? keyName : u"ContentType") +
                                  "'");
  }
  return {domText(key), domText(type)};
}

void checkEmpty(const DOMElement& element) {
  for (const DOMNode* node = element.getFirstChild(); node != nullptr;
       node = node->getNextSibling()) {
    if (node->getNodeType() == DOMNode::COMMENT_NODE ||
        node->getNodeType() == DOMNode::PROCESSING_INSTRUCTION_NODE) {
      continue;
    }
    throw FormatError("CT-3", "element " + quoted(element) + ": it is not empty");
  }
}

// The type, with the entry named when it is none.
ContentType readType(std::u16string_view type, const std::string& entry) {
  try {
    return ContentType(type);
  } catch (const FormatError& fault) {
    throw FormatError(fault.rule(), entry + ": " + fault.what());
  }
}

void readDefault(const DOMElement& element, ContentTypes& types) {
  const EntryAttributes attributes = readAttributes(element, u"Extension");
  checkEmpty(element);
  const std::string extension = toUtf8ForDisplay(attributes.key);
  types.addDefault(extension,
                   readType(attributes.type, "default type for extension '" + extension + "'"));
}

PartName readPartName(std::u16string_view name) {
  try {
    return PartName(name);
  } catch (const FormatError& fault) {
    throw FormatError("CT-5",
                      "type override for '" + toUtf8ForDisplay(name) + "': " + fault.what());
  }
}

void readOverride(const DOMElement& element, ContentTypes& types) {
  const EntryAttributes attributes = readAttributes(element, u"PartName");
  checkEmpty(element);
  const PartName name = readPartName(attributes.key);
  types.addOverride(name.itemName(),
                    readType(attributes.type, "type override for '" + name.canonical() + "'"));
}

void readChild(const DOMNode& node, ContentTypes& types) {
  if (isTextNode(node)) {
    if (trimXmlSpace(domText(node.getNodeValue())).empty()) return;
    throw FormatError("CT-2", "root element 'Types': it holds text");
  }
  if (!isElementNode(node)) return;
  const auto& element = static_cast<const DOMElement&>(node);
  if (domNamespace(node) != kContentTypesNamespace) {
    throw FormatError("CT-13", "element " + quoted(node) + ": it is of another namespace");
  }
  if (domLocalName(node) == u"Default") return readDefault(element, types);
  if (domLocalName(node) == u"Override") return readOverride(element, types);
  throw FormatError("CT-2", "element " + quoted(node) + ": it is neither 'Default' nor 'Override'");
}

}  // namespace

void ContentTypesReader::startRoot(const DOMElement& root) {
  readPiece(faults_, [&] {
    checkRoot(root);
    isRead_ = true;
    checkRootAttributes(root);
  });
}

void ContentTypesReader::takeChild(const DOMNode& child) {
  if (!isRead_) return;
  readPiece(faults_, [&] { readChild(child, types_); });
}

}  // namespace opc::model::detail
