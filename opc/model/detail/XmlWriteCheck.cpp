// SPDX-License-Identifier: MIT
#include "opc/model/detail/XmlWriteCheck.h"

#include <cstdint>
#include <iomanip>
#include <sstream>
#include <string>
#include <string_view>

#include "opc/Text.h"
#include "opc/model/DomText.h"
#include "opc/model/InvalidXMLDocument.h"
#include "opc/model/XercesHelper.h"
#include "opc/model/detail/XmlCharacters.h"

namespace opc::model::detail {
namespace {

using xercesc::DOMNode;

std::string quoted(const char16_t* name) {
  return "'" + toUtf8ForDisplay(domText(name)) + "'";
}

std::string describe(const DOMNode& node) {
  switch (node.getNodeType()) {
    case DOMNode::ELEMENT_NODE:
      return "element " + quoted(node.getNodeName());
    case DOMNode::COMMENT_NODE:
      return "a comment";
    case DOMNode::PROCESSING_INSTRUCTION_NODE:
      return "processing instruction " + quoted(node.getNodeName());
    case DOMNode::CDATA_SECTION_NODE:
      return "a CDATA section in " + describe(*node.getParentNode());
    default:
      return node.getParentNode() == nullptr ? std::string("the document")
                                             : describe(*node.getParentNode());
  }
}

[[noreturn]] void fail(const std::string& why) {
  throw InvalidXMLDocument("cannot write XML: " + why, 0, 0);
}

std::string codePointName(std::uint32_t point) {
  std::ostringstream out;
  out << "U+" << std::uppercase << std::hex << std::setw(4) << std::setfill('0') << point;
  return out.str();
}

// `where` is called only for the message.
template <typename Where>
void checkText(std::u16string_view text, Where where) {
  const std::size_t at = findNonXml(text);
  if (at != text.size()) {
    fail(where() + " holds " + codePointName(text[at]) + ", which XML cannot carry");
  }
}

// A prefix that stands for no namespace would be written, but could not be read back.
void checkName(const DOMNode& node, const DOMNode& element) {
  const std::u16string_view name = domText(node.getNodeName());
  if (node.getNamespaceURI() != nullptr) return;
  if (name.find(u':') == std::u16string_view::npos && name != u"xmlns") return;
  fail("the name " + quoted(node.getNodeName()) + " in " + describe(element) +
       " has a prefix without a namespace");
}

class WriteCheck {
 public:
  // Walks the tree without recursion: its depth is the caller's.
  void run(const xercesc::DOMDocument& document) {
    const DOMNode* node = document.getFirstChild();
    while (node != nullptr) {
      visit(*node);
      node = next(node, document);
    }
  }

 private:
  const DOMNode* next(const DOMNode* node, const DOMNode& top) {
    if (const DOMNode* child = node->getFirstChild()) {
      ++depth_;
      return child;
    }
    while (node->getNextSibling() == nullptr) {
      node = node->getParentNode();
      if (node == &top) return nullptr;
      --depth_;
    }
    return node->getNextSibling();
  }

  void visit(const DOMNode& node) {
    switch (node.getNodeType()) {
      case DOMNode::ELEMENT_NODE:
        return visitElement(static_cast<const xercesc::DOMElement&>(node));
      case DOMNode::TEXT_NODE:
        return checkText(dataOf(node), [&] { return describe(node); });
      case DOMNode::CDATA_SECTION_NODE:
        return visitCdata(node);
      case DOMNode::COMMENT_NODE:
        return visitComment(node);
      case DOMNode::PROCESSING_INSTRUCTION_NODE:
        return visitInstruction(node);
      default:
        fail("a node of kind " + std::to_string(node.getNodeType()) + " in " + describe(node) +
             " is not supported");
    }
  }

  static std::u16string_view dataOf(const DOMNode& node) {
    const auto& text = static_cast<const xercesc::DOMCharacterData&>(node);
    return {text.getData(), text.getLength()};
  }

  void visitElement(const xercesc::DOMElement& element) {
    if (depth_ >= XercesHelper::kMaxDepth) {
      fail("elements are nested more than " + std::to_string(XercesHelper::kMaxDepth) + " deep");
    }
    countNode();
    checkName(element, element);
    checkNamespace(element, element);
    const xercesc::DOMNamedNodeMap* attributes = element.getAttributes();
    const XMLSize_t count = attributes->getLength();
    if (count > XercesHelper::kMaxAttributes) {
      fail(describe(element) + " has more than " + std::to_string(XercesHelper::kMaxAttributes) +
           " attributes");
    }
    for (XMLSize_t i = 0; i < count; ++i) visitAttribute(*attributes->item(i), element);
  }

  void visitAttribute(const DOMNode& attribute, const DOMNode& element) {
    countNode();
    checkName(attribute, element);
    checkNamespace(attribute, element);
    const std::u16string_view value = domText(attribute.getNodeValue());
    const auto where = [&] {
      return "attribute " + quoted(attribute.getNodeName()) + " of " + describe(element);
    };
    checkText(value, where);
    if (value.size() > XercesHelper::kMaxAttributeLength / 3 &&
        utf8Length(value) > XercesHelper::kMaxAttributeLength) {
      fail(where() + " is longer than " + std::to_string(XercesHelper::kMaxAttributeLength) +
           " bytes");
    }
  }

  // Namespace names are shared among nodes, so the last one seen is mostly the next one too.
  void checkNamespace(const DOMNode& node, const DOMNode& element) {
    const char16_t* name = node.getNamespaceURI();
    if (name == nullptr || name == lastNamespace_) return;
    checkText(name, [&] { return "the namespace in " + describe(element); });
    lastNamespace_ = name;
  }

  void visitCdata(const DOMNode& node) {
    countNode();
    const std::u16string_view data = dataOf(node);
    checkText(data, [&] { return describe(node); });
    if (data.find(u'\r') != std::u16string_view::npos) {
      fail(describe(node) + " holds U+000D, which would be read back as U+000A");
    }
  }

  static void visitComment(const DOMNode& node) {
    const std::u16string_view data = dataOf(node);
    checkText(data, [&] { return describe(node); });
    if (data.find(u"--") != std::u16string_view::npos || data.ends_with(u'-')) {
      fail("a comment holds '--' or ends with '-'");
    }
  }

  static void visitInstruction(const DOMNode& node) {
    const std::u16string_view data = domText(node.getNodeValue());
    checkText(data, [&] { return describe(node); });
    if (data.find(u"?>") != std::u16string_view::npos) fail(describe(node) + " holds '?>'");
  }

  void countNode() {
    if (++nodes_ > XercesHelper::kMaxNodes) {
      fail("the document has more than " + std::to_string(XercesHelper::kMaxNodes) +
           " elements and attributes");
    }
  }

  unsigned depth_ = 0;
  std::uint64_t nodes_ = 0;
  const char16_t* lastNamespace_ = nullptr;
};

}  // namespace

void checkBeforeWriting(const xercesc::DOMDocument& document) {
  if (document.getDocumentElement() == nullptr) fail("the document has no element");
  WriteCheck().run(document);
}

}  // namespace opc::model::detail
