// SPDX-License-Identifier: MIT
#include "opc/model/XercesHelper.h"

#include <xercesc/framework/XMLFormatter.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "opc/model/XercesErrors.h"
#include "opc/model/XercesParser.h"
#include "opc/model/detail/XercesMemory.h"
#include "opc/model/detail/XmlWriteCheck.h"

namespace opc::model {
namespace {

using xercesc::DOMElement;
using xercesc::DOMNode;
using xercesc::XMLUni;

xercesc::DOMImplementation& implementation() {
  detail::startXerces();
  return *xercesc::DOMImplementationRegistry::getDOMImplementation(u"LS");
}

// Collects what the serializer writes, so that nothing is handed on before it is complete.
class CollectingTarget final : public xercesc::XMLFormatTarget {
 public:
  void writeChars(const XMLByte* bytes, XMLSize_t count, xercesc::XMLFormatter*) override {
    collected_.append(reinterpret_cast<const char*>(bytes), count);
  }
  const std::string& collected() const { return collected_; }

 private:
  std::string collected_;
};

using OutputPointer = std::unique_ptr<xercesc::DOMLSOutput, XercesDeleter>;

OutputPointer outputTo(xercesc::XMLFormatTarget& target) {
  OutputPointer output(implementation().createLSOutput());
  output->setEncoding(XMLUni::fgUTF8EncodingString);
  output->setByteStream(&target);
  return output;
}

void refuseNull(std::u16string_view text, const std::string& where) {
  if (text.find(u'\0') == std::u16string_view::npos) return;
  throw InvalidXMLDocument(where + " holds U+0000, which XML cannot carry", 0, 0);
}

std::string describe(const DOMElement& element) {
  return "element '" + xercesMessage(element.getNodeName()) + "'";
}

void requireNode(const void* node, const char* action) {
  if (node == nullptr) {
    throw Exception(ErrorCode::InvalidArgument,
                    std::string("cannot ") + action + ": there is no element");
  }
}

DOMElement* append(xercesc::DOMDocument& document, DOMNode& parent,
                   const std::u16string& namespaceURI, const std::u16string& name) {
  refuseNull(name, "the name of an element");
  refuseNull(namespaceURI, "a namespace");
  return translatingXercesErrors("cannot append element '" + toUtf8ForDisplay(name) + "'", [&] {
    DOMElement* element = document.createElementNS(namespaceURI.c_str(), name.c_str());
    parent.appendChild(element);
    return element;
  });
}

bool isElementNamed(const DOMNode& node, std::u16string_view localName) {
  if (node.getNodeType() != DOMNode::ELEMENT_NODE) return false;
  const char16_t* name = node.getLocalName();
  return localName == (name != nullptr ? name : node.getNodeName());
}

bool isText(const DOMNode& node) {
  return node.getNodeType() == DOMNode::TEXT_NODE ||
         node.getNodeType() == DOMNode::CDATA_SECTION_NODE;
}

void appendData(const DOMNode& node, std::u16string& text) {
  const auto& data = static_cast<const xercesc::DOMCharacterData&>(node);
  text.append(data.getData(), data.getLength());
}

// The next node below `top` in document order; null after the last one.
const DOMNode* nextNode(const DOMNode* node, const DOMNode* top) {
  if (node->getFirstChild() != nullptr) return node->getFirstChild();
  while (node != top && node->getNextSibling() == nullptr) node = node->getParentNode();
  return node == top ? nullptr : node->getNextSibling();
}

}  // namespace

XercesGuard::XercesGuard() {
  detail::startXerces();
}

void XercesParserDeleter::operator()(XercesParser* parser) const {
  std::unique_ptr<XercesParser> owned(parser);
}

ParserPointer XercesHelper::createParser() {
  return ParserPointer(std::make_unique<XercesParser>().release());
}

WriterPointer XercesHelper::createWriter() {
  return translatingXercesErrors("cannot make an XML writer", [] {
    WriterPointer writer(implementation().createLSSerializer());
    xercesc::DOMConfiguration* settings = writer->getDomConfig();
    settings->setParameter(XMLUni::fgDOMXMLDeclaration, true);
    settings->setParameter(XMLUni::fgDOMWRTFormatPrettyPrint, false);
    settings->setParameter(XMLUni::fgDOMWRTBOM, false);
    return writer;
  });
}

DocumentPointer XercesHelper::createDocument() {
  return translatingXercesErrors("cannot make an XML document",
                                 [] { return DocumentPointer(implementation().createDocument()); });
}

xercesc::DOMDocument* XercesHelper::readDocumentFromStream(const ParserPointer& parser,
                                                           InputStream& stream, bool validate,
                                                           std::u16string_view schemaLocation,
                                                           std::u16string_view) {
  if (validate || !schemaLocation.empty()) {
    throw Exception(ErrorCode::Unsupported, "XML is not validated against a schema");
  }
  return parser->parse(stream);
}

void XercesHelper::writeDocumentToStream(const WriterPointer& writer,
                                         const DocumentPointer& document, OutputStream& stream) {
  CollectingTarget target;
  translatingXercesErrors("cannot write XML", [&] {
    detail::checkBeforeWriting(*document);
    const OutputPointer output = outputTo(target);
    if (!writer->write(document.get(), output.get())) {
      throw InvalidXMLDocument("cannot write XML: the serializer refused the document", 0, 0);
    }
  });
  const std::string& bytes = target.collected();
  if (bytes.size() > kMaxDocumentSize) {
    throw InvalidXMLDocument("cannot write XML: the document is longer than " +
                                 std::to_string(kMaxDocumentSize) + " bytes",
                             0, 0, "RB-1");
  }
  stream.write(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
}

DOMElement* XercesHelper::appendElementNS(const DocumentPointer& document,
                                          const std::u16string& namespaceURI,
                                          const std::u16string& name) {
  return append(*document, *document, namespaceURI, name);
}

DOMElement* XercesHelper::appendElementNS(DOMElement* parent, const std::u16string& namespaceURI,
                                          const std::u16string& name) {
  requireNode(parent, "append an element");
  return append(*parent->getOwnerDocument(), *parent, namespaceURI, name);
}

DOMElement* XercesHelper::getElement(const DOMElement* parent, std::u16string_view localName) {
  if (parent == nullptr) return nullptr;
  for (DOMNode* node = parent->getFirstChild(); node != nullptr; node = node->getNextSibling()) {
    if (isElementNamed(*node, localName)) return static_cast<DOMElement*>(node);
  }
  return nullptr;
}

std::vector<DOMElement*> XercesHelper::getElements(const DOMElement* parent,
                                                   std::u16string_view localName) {
  std::vector<DOMElement*> found;
  if (parent == nullptr) return found;
  for (DOMNode* node = parent->getFirstChild(); node != nullptr; node = node->getNextSibling()) {
    if (isElementNamed(*node, localName)) found.push_back(static_cast<DOMElement*>(node));
  }
  return found;
}

bool XercesHelper::getElementText(const DOMElement* element, std::u16string& text) {
  if (element == nullptr) return false;
  text.clear();
  for (const DOMNode* node = nextNode(element, element); node != nullptr;
       node = nextNode(node, element)) {
    if (isText(*node)) appendData(*node, text);
  }
  return true;
}

bool XercesHelper::getElementAttribute(const DOMElement* element, const std::u16string& name,
                                       std::u16string& value) {
  if (element == nullptr) return false;
  const xercesc::DOMAttr* attribute = element->getAttributeNodeNS(nullptr, name.c_str());
  if (attribute == nullptr) return false;
  value = attribute->getValue();
  return true;
}

void XercesHelper::setElementText(DOMElement* element, const std::u16string& text) {
  requireNode(element, "set text");
  refuseNull(text, describe(*element));
  translatingXercesErrors("cannot set the text of an element",
                          [&] { element->setTextContent(text.empty() ? nullptr : text.c_str()); });
}

void XercesHelper::setElementAttribute(DOMElement* element, const std::u16string& name,
                                       const std::u16string& value) {
  requireNode(element, "set an attribute");
  refuseNull(name, "the name of an attribute");
  refuseNull(value, "attribute '" + toUtf8ForDisplay(name) + "' of " + describe(*element));
  translatingXercesErrors("cannot set attribute '" + toUtf8ForDisplay(name) + "'",
                          [&] { element->setAttributeNS(nullptr, name.c_str(), value.c_str()); });
}

}  // namespace opc::model
