// SPDX-License-Identifier: MIT
#include "opc/model/DocumentPieces.h"

#include <algorithm>
#include <array>
#include <memory_resource>
#include <vector>
#include <xercesc/parsers/SAXParser.hpp>
#include <xercesc/sax/HandlerBase.hpp>

#include "opc/model/DomText.h"
#include "opc/model/detail/StrictParser.h"
#include "opc/model/detail/XercesMemory.h"
#include "opc/model/detail/XmlLimits.h"

namespace opc::model {
namespace {

// The memory of nodes that go at the same time.
class NodeMemory {
 public:
  XmlNode& makeNode() { return *::new (allocate<XmlNode>(1)) XmlNode; }

  std::span<XmlAttribute> makeAttributes(std::size_t count) {
    auto* first = allocate<XmlAttribute>(count);
    std::uninitialized_value_construct_n(first, count);
    return {first, count};
  }

  std::u16string_view keep(std::u16string_view text) {
    auto* copy = allocate<char16_t>(text.size());
    std::copy(text.begin(), text.end(), copy);
    return {copy, text.size()};
  }

  void release() { memory_.release(); }

 private:
  template <typename T>
  T* allocate(std::size_t count) {
    return static_cast<T*>(memory_.allocate(count * sizeof(T), alignof(T)));
  }

  std::array<std::byte, 4096> first_;
  std::pmr::monotonic_buffer_resource memory_{first_.data(), first_.size()};
};

class PieceParser final : public detail::StrictParser<xercesc::SAXParser> {
 public:
  PieceParser() {
    setDocumentHandler(&unused_);  // otherwise the scanner does not call this class
  }

  void parsePieces(const XmlText& text, DocumentPieces& pieces) {
    pieces_ = &pieces;
    parseText(text);
    rootMemory_.release();
  }

  void startElement(const xercesc::XMLElementDecl& declaration, unsigned urlId, const XMLCh* prefix,
                    const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes, XMLSize_t count,
                    bool isEmpty, bool isRoot) override {
    NodeMemory& memory = isRoot ? rootMemory_ : pieceMemory_;
    XmlNode& element = memory.makeNode();
    element.name.namespaceUri = scanner().getURIText(urlId);
    setName(memory, element.name, domText(prefix), declaration.getBaseName());
    element.attributes = readAttributes(memory, attributes, count);
    if (isRoot) {
      pieces_->startRoot(element);
    } else {
      append(element);
    }
    open_.push_back({&element, nullptr});
    if (isEmpty) close();
  }

  void endElement(const xercesc::XMLElementDecl&, unsigned, bool, const XMLCh*) override {
    close();
  }

  void docCharacters(const XMLCh* text, XMLSize_t length, bool) override {
    if (open_.empty()) return;  // white space around the root
    XmlNode& node = pieceMemory_.makeNode();
    node.kind = XmlNode::Kind::Text;
    node.text = pieceMemory_.keep({text, length});
    append(node);
    if (open_.size() == 1) handOver(node);
  }

 private:
  // An element whose end has not come.
  struct Open {
    XmlNode* element;
    XmlNode* lastChild;
  };

  static void setName(NodeMemory& memory, XmlName& name, std::u16string_view prefix,
                      const XMLCh* localName) {
    const std::u16string_view local = domText(localName);
    if (prefix.empty()) {
      name.qualifiedName = name.localName = memory.keep(local);
      return;
    }
    std::u16string qualified(prefix);
    qualified += u':';
    qualified += local;
    name.qualifiedName = memory.keep(qualified);
    name.localName = name.qualifiedName.substr(prefix.size() + 1);
  }

  std::span<const XmlAttribute> readAttributes(
      NodeMemory& memory, const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes,
      XMLSize_t count) const {
    const std::span<XmlAttribute> result = memory.makeAttributes(count);
    for (XMLSize_t i = 0; i < count; ++i) {
      const xercesc::XMLAttr& source = *attributes.elementAt(i);
      XmlAttribute& attribute = result[i];
      setName(memory, attribute.name, domText(source.getPrefix()), source.getName());
      attribute.name.namespaceUri = attribute.name.qualifiedName == u"xmlns"
                                        ? kXmlnsNamespace
                                        : domText(scanner().getURIText(source.getURIId()));
      attribute.value = memory.keep(domText(source.getValue()));
    }
    return result;
  }

  // Children of the root are not linked to it.
  void append(XmlNode& node) {
    if (open_.size() < 2) return;
    Open& parent = open_.back();
    (parent.lastChild == nullptr ? parent.element->firstChild : parent.lastChild->next) = &node;
    parent.lastChild = &node;
  }

  void close() {
    const XmlNode& element = *open_.back().element;
    open_.pop_back();
    if (open_.size() == 1) handOver(element);
  }

  void handOver(const XmlNode& child) {
    pieces_->takeChild(child);
    pieceMemory_.release();
  }

  DocumentPieces* pieces_ = nullptr;
  xercesc::HandlerBase unused_;
  NodeMemory rootMemory_;
  NodeMemory pieceMemory_;
  std::vector<Open> open_;
};

}  // namespace

void parsePieces(InputStream& stream, DocumentPieces& pieces) {
  detail::startXerces();
  const std::string bytes = detail::readDocument(stream);
  const XmlText text(bytes);
  detail::checkXmlLimits(text.utf8(), detail::PieceLimits::Checked);
  translatingXercesErrors("cannot read XML", [&] {
    detail::withKeptParser<PieceParser>(
        text, [&](PieceParser& parser) { parser.parsePieces(text, pieces); });
  });
}

}  // namespace opc::model
