// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/internal/XMLScanner.hpp>
#include <xercesc/sax/EntityResolver.hpp>
#include <xercesc/sax/ErrorHandler.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/XMLUni.hpp>
#include <xercesc/validators/DTD/DTDElementDecl.hpp>

#include "opc/Streams.h"
#include "opc/model/InvalidXMLDocument.h"
#include "opc/model/XercesErrors.h"
#include "opc/model/XmlEncoding.h"

namespace opc::model::detail {

/// All bytes of `stream`. Throws InvalidXMLDocument beyond XercesHelper::kMaxDocumentSize, and what
/// the stream throws. Never holds more than one block beyond the limit.
std::string readDocument(InputStream& stream);

/// Every error ends the parse: what would follow is a partial document.
class StoppingErrorHandler final : public xercesc::ErrorHandler {
 public:
  void warning(const xercesc::SAXParseException&) override {}
  void error(const xercesc::SAXParseException& fault) override { fail(fault); }
  void fatalError(const xercesc::SAXParseException& fault) override { fail(fault); }
  void resetErrors() override {}

 private:
  [[noreturn]] static void fail(const xercesc::SAXParseException& fault);
};

/// Nothing outside the document is ever opened.
class RefusingEntityResolver final : public xercesc::EntityResolver {
 public:
  xercesc::InputSource* resolveEntity(const XMLCh* publicId, const XMLCh* systemId) override;
};

/// Parsers for the next short documents: to make one takes longer than to read such a document.
/// Any thread may use it. It has no lock, which a fork could leave taken.
template <typename Parser>
class ParserCache {
 public:
  /// Null if there is none.
  std::unique_ptr<Parser> take() {
    for (std::atomic<Parser*>& place : places_) {
      if (Parser* parser = place.exchange(nullptr)) return std::unique_ptr<Parser>(parser);
    }
    return nullptr;
  }

  void give(std::unique_ptr<Parser> parser) {
    for (std::atomic<Parser*>& place : places_) {
      Parser* none = nullptr;
      if (!place.compare_exchange_strong(none, parser.get())) continue;
      [[maybe_unused]] Parser* kept = parser.release();
      return;
    }
  }

 private:
  static constexpr std::size_t kMaxParsers = 8;

  std::array<std::atomic<Parser*>, kMaxParsers> places_{};
};

/// Parses `text` with `parse(parser)`, which may throw, and may parse other documents meanwhile.
template <typename Parser, typename Parse>
void withKeptParser(const XmlText& text, const Parse& parse) {
  constexpr std::size_t kMaxLength = 65536;  // bytes; the buffers of a parser grow and stay
  // Not of a thread: to note that such a variable is to be destroyed takes memory, without which
  // the process would end. Never destroyed, as Xerces-C is never stopped.
  static auto& kept = *new ParserCache<Parser>;
  std::unique_ptr<Parser> parser = kept.take();
  if (parser == nullptr) parser = std::make_unique<Parser>();
  parse(*parser);
  if (text.utf8().size() <= kMaxLength) kept.give(std::move(parser));
}

/// A parser of Xerces-C, a DOM or a SAX parser, that reads XML 1.0 without document type. All that
/// matters is set here, whatever the environment of the process says.
template <typename Parser>
class StrictParser : public Parser {
 public:
  StrictParser() {
    this->useScanner(xercesc::XMLUni::fgWFXMLScanner);  // there is nothing to validate against
    this->setDoNamespaces(true);
    this->setValidationScheme(Parser::Val_Never);
    this->setDoSchema(false);
    this->setLoadExternalDTD(false);
    this->setLoadSchema(false);
    this->setDisableDefaultEntityResolution(true);
    this->setExitOnFirstFatalError(true);
    this->setErrorHandler(&errorHandler_);
    this->setEntityResolver(&entityResolver_);
  }

  void parseText(const XmlText& text, bool comparesEncoding = true) {
    text_ = &text;
    comparesEncoding_ = comparesEncoding;
    const std::string_view bytes = text.utf8();
    xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(bytes.data()), bytes.size(),
                                      u"document");
    source.setCopyBufToStream(false);
    source.setEncoding(xercesc::XMLUni::fgUTF8EncodingString);
    Parser::parse(source);
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
    Parser::XMLDecl(version, encoding, standalone, actualEncoding);
  }

  /// Instructions are for others; ten million of them must not become ten million nodes.
  void docPI(const XMLCh*, const XMLCh*) override {}

 protected:
  const xercesc::XMLScanner& scanner() const { return scannerOf(this->getScanner()); }

 private:
  static const xercesc::XMLScanner& scannerOf(const xercesc::XMLScanner& scanner) {
    return scanner;
  }
  static const xercesc::XMLScanner& scannerOf(const xercesc::XMLScanner* scanner) {
    return *scanner;
  }

  [[noreturn]] void failHere(const std::string& why, const char* rule) const {
    const xercesc::Locator* place = scanner().getLocator();
    throw InvalidXMLDocument(why, place->getLineNumber(), place->getColumnNumber(), rule);
  }

  StoppingErrorHandler errorHandler_;
  RefusingEntityResolver entityResolver_;
  const XmlText* text_ = nullptr;
  bool comparesEncoding_ = true;
};

}  // namespace opc::model::detail
