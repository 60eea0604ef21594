// SPDX-License-Identifier: MIT
#include "opc/model/XercesParser.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>
#include <xercesc/dom/impl/DOMDocumentImpl.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/internal/XMLScanner.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/EntityResolver.hpp>
#include <xercesc/sax/ErrorHandler.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "opc/Text.h"
#include "opc/model/XercesErrors.h"
#include "opc/model/XmlEncoding.h"
#include "opc/model/detail/XercesMemory.h"
#include "opc/model/detail/XmlLimits.h"

namespace opc::model {
namespace {

constexpr std::size_t kBlockSize = 65536;

// Reads everything, and never holds more than one block beyond the limit.
std::string readAll(InputStream& stream) {
  std::string bytes;
  std::vector<unsigned char> block(kBlockSize);  // the stack of a host's thread may be small
  while (const std::size_t count = stream.read(block.data(), block.size())) {
    if (count > XercesHelper::kMaxDocumentSize - bytes.size()) {
      throw InvalidXMLDocument("the document is longer than " +
                                   std::to_string(XercesHelper::kMaxDocumentSize) + " bytes",
                               0, 0, "RB-1");
    }
    const std::size_t needed = bytes.size() + count;
    if (needed > bytes.capacity()) {
      bytes.reserve(std::min<std::size_t>(std::max(needed, bytes.capacity() * 2),
                                          XercesHelper::kMaxDocumentSize));
    }
    bytes.append(reinterpret_cast<const char*>(block.data()), count);
  }
  return bytes;
}

[[noreturn]] void failNotWellFormed(const xercesc::SAXParseException& fault) {
  throw InvalidXMLDocument("not well-formed: " + xercesMessage(fault.getMessage()),
                           fault.getLineNumber(), fault.getColumnNumber(), "XM-3");
}

// Every error ends the parse: what would follow is a partial document.
class StoppingErrorHandler final : public xercesc::ErrorHandler {
 public:
  void warning(const xercesc::SAXParseException&) override {}
  void error(const xercesc::SAXParseException& fault) override { failNotWellFormed(fault); }
  void fatalError(const xercesc::SAXParseException& fault) override { failNotWellFormed(fault); }
  void resetErrors() override {}
};

// Nothing outside the document is ever opened.
class RefusingEntityResolver final : public xercesc::EntityResolver {
 public:
  xercesc::InputSource* resolveEntity(const XMLCh*, const XMLCh* systemId) override {
    throw InvalidXMLDocument("external entity '" + xercesMessage(systemId) + "' is not allowed", 0,
                             0, "RB-9");
  }
};

}  // namespace

// Everything is set here, whatever the environment of the process says.
class XercesParser::DomParser : public xercesc::XercesDOMParser {
 public:
  explicit DomParser(bool comparesEncoding) : comparesEncoding_(comparesEncoding) {
    setDoNamespaces(true);
    setValidationScheme(Val_Never);
    setDoSchema(false);
    setLoadExternalDTD(false);
    setLoadSchema(false);
    setDisableDefaultEntityResolution(true);
    setCreateEntityReferenceNodes(false);
    setCreateCommentNodes(false);  // text on both sides of a comment is one text
    setExitOnFirstFatalError(true);
    setErrorHandler(&errorHandler_);
    setEntityResolver(&entityResolver_);
  }

  void parseText(const XmlText& text) {
    text_ = &text;
    const std::string_view bytes = text.utf8();
    xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(bytes.data()), bytes.size(),
                                      u"document");
    source.setCopyBufToStream(false);
    source.setEncoding(xercesc::XMLUni::fgUTF8EncodingString);
    parse(source);
  }

  void doctypeDecl(const xercesc::DTDElementDecl&, const XMLCh*, const XMLCh*, bool,
                   bool) override {
    failHere("a document type declaration is not allowed", "XM-2");
  }

  void XMLDecl(const XMLCh* version, const XMLCh* encoding, const XMLCh* standalone,
               const XMLCh* actualEncoding) override {
    if (version == nullptr || std::u16string_view(version) != u"1.0") {
      failHere("version '" + xercesMessage(version) + "' of XML is not read, only 1.0", "XM-3");
    }
    if (encoding != nullptr && comparesEncoding_) text_->checkDeclaration(encoding);
    xercesc::XercesDOMParser::XMLDecl(version, encoding, standalone, actualEncoding);
  }

  // Instructions are for others; ten million of them must not become ten million nodes.
  void docPI(const XMLCh*, const XMLCh*) override {}

 private:
  [[noreturn]] void failHere(const std::string& why, const char* rule) const {
    const xercesc::Locator* place = getScanner()->getLocator();
    throw InvalidXMLDocument(why, place->getLineNumber(), place->getColumnNumber(), rule);
  }

  StoppingErrorHandler errorHandler_;
  RefusingEntityResolver entityResolver_;
  const XmlText* text_ = nullptr;
  bool comparesEncoding_;
};

// The children of the root are made in documents of their own, each of which is dropped with all
// its memory when it has grown: a single document would keep what was released for ever.
class XercesParser::PieceParser final : public DomParser {
 public:
  explicit PieceParser(DocumentPieces& pieces) : DomParser(true), pieces_(pieces) {}

  // A parse that fails ends here too.
  ~PieceParser() override {
    if (whole_ != nullptr) fDocument = whole_;
  }

  void startElement(const xercesc::XMLElementDecl& declaration, unsigned urlId, const XMLCh* prefix,
                    const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes, XMLSize_t count,
                    bool isEmpty, bool isRoot) override {
    if (depth_ == 1) handOver();
    used_ += kNodeCost * (count + 1);
    for (XMLSize_t i = 0; i < count; ++i) {
      used_ += xercesc::XMLString::stringLen(attributes.elementAt(i)->getValue());
    }
    ++depth_;
    DomParser::startElement(declaration, urlId, prefix, attributes, count, isEmpty, isRoot);
    if (isRoot && !isEmpty) startRoot();
  }

  void endElement(const xercesc::XMLElementDecl& declaration, unsigned urlId, bool isRoot,
                  const XMLCh* prefix) override {
    if (isRoot && root_ == nullptr) startRoot();
    if (isRoot) {
      handOver();
      fDocument = whole_;
    }
    DomParser::endElement(declaration, urlId, isRoot, prefix);
    if (--depth_ == 1) handOver();
  }

  void docCharacters(const XMLCh* text, XMLSize_t length, bool isCdata) override {
    DomParser::docCharacters(text, length, isCdata);
    used_ += length;
    if (depth_ == 1 && used_ > kMaxUsed) handOver();
  }

 private:
  // In characters.
  static constexpr std::size_t kNodeCost = 128;
  static constexpr std::size_t kMaxUsed = std::size_t{1} << 18;

  void startRoot() {
    root_ = fDocument->getDocumentElement();
    whole_ = fDocument;
    renew();
    pieces_.startRoot(*root_);
  }

  void handOver() {
    while (xercesc::DOMNode* child = root_->getFirstChild()) {
      pieces_.takeChild(*child);
      root_->removeChild(child);
    }
    fCurrentNode = root_;
    if (used_ > kMaxUsed) renew();
  }

  void renew() {
    pieceDocument_ = XercesHelper::createDocument();
    fDocument = static_cast<xercesc::DOMDocumentImpl*>(pieceDocument_.get());
    used_ = 0;
  }

  DocumentPieces& pieces_;
  DocumentPointer pieceDocument_;
  xercesc::DOMDocumentImpl* whole_ = nullptr;
  xercesc::DOMElement* root_ = nullptr;
  unsigned depth_ = 0;
  std::size_t used_ = 0;
};

XercesParser::XercesParser() {
  detail::startXerces();
}
XercesParser::~XercesParser() = default;

xercesc::DOMDocument* XercesParser::parse(InputStream& stream) {
  parser_.reset();
  const std::string bytes = readAll(stream);
  const XmlText text(bytes);
  detail::checkXmlLimits(text.utf8());
  return translatingXercesErrors("cannot read XML", [&] {
    auto parser = std::make_unique<DomParser>(comparesEncoding_);
    parser->parseText(text);
    parser_ = std::move(parser);
    return parser_->getDocument();
  });
}

void XercesParser::parse(InputStream& stream, DocumentPieces& pieces) {
  detail::startXerces();
  const std::string bytes = readAll(stream);
  const XmlText text(bytes);
  detail::checkXmlLimits(text.utf8(), detail::PieceLimits::Checked);
  translatingXercesErrors("cannot read XML", [&] { PieceParser(pieces).parseText(text); });
}

}  // namespace opc::model
