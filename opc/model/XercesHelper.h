// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>
#include <xercesc/dom/DOM.hpp>

#include "opc/Streams.h"
#include "opc/model/InvalidXMLDocument.h"

namespace opc::model {

/// Initialises Xerces-C, which then stays initialised until the process ends. Optional:
/// XercesHelper does the same on first use, on any thread. The constructor throws Exception if
/// Xerces-C cannot start.
class XercesGuard {
 public:
  XercesGuard();
};

/// Releases DOM documents and serializers. A parser is a class of ours with a destructor.
struct XercesDeleter {
  template <typename T>
  void operator()(T* object) const {
    object->release();
  }
};

/// Text of Xerces-C: its character is char16_t.
using XercesString = std::u16string;

/// A DOM parser with the limits of packages: no document type, nothing external, UTF-8 and UTF-16
/// only, depth, attributes and size bounded. It owns the document that it parsed last.
class XercesParser;
struct XercesParserDeleter {
  void operator()(XercesParser* parser) const;
};

using DocumentPointer = std::unique_ptr<xercesc::DOMDocument, XercesDeleter>;
using WriterPointer = std::unique_ptr<xercesc::DOMLSSerializer, XercesDeleter>;
using ParserPointer = std::unique_ptr<XercesParser, XercesParserDeleter>;

/// Xerces-C behind UTF-16 strings and opc exceptions. Threads may use it at the same time, with
/// documents, parsers and writers of their own.
struct XercesHelper {
  static constexpr std::uint64_t kMaxDocumentSize = 64u << 20;  ///< bytes
  static constexpr unsigned kMaxDepth = 256;                    ///< elements inside each other
  static constexpr unsigned kMaxAttributes = 4096;              ///< of one element
  static constexpr std::size_t kMaxAttributeLength = 1u << 20;  ///< bytes
  /// Elements, attributes and CDATA sections of a document: each costs some 250 bytes in memory.
  static constexpr std::uint64_t kMaxNodes = 1u << 21;
  /// What Xerces-C may spend on its linear searches (attributes of an element, names, namespaces).
  static constexpr std::uint64_t kMaxComparisons = 1u << 28;

  static ParserPointer createParser();
  static WriterPointer createWriter();
  static DocumentPointer createDocument();

  /// Parses all of `stream`. The document belongs to the parser. `validate` must be false and
  /// `schemaLocation` empty; `expectedNamespace` documents what is expected and refuses nothing.
  /// Throws InvalidXMLDocument, and what the stream throws.
  static xercesc::DOMDocument* readDocumentFromStream(const ParserPointer& parser,
                                                      InputStream& stream, bool validate,
                                                      std::u16string_view schemaLocation,
                                                      std::u16string_view expectedNamespace);

  /// Serialises as UTF-8 with a declaration and no added white space. Throws InvalidXMLDocument for
  /// text that XML cannot carry, before a byte is handed to `stream`.
  static void writeDocumentToStream(const WriterPointer& writer, const DocumentPointer& document,
                                    OutputStream& stream);

  static xercesc::DOMElement* appendElementNS(const DocumentPointer& document,
                                              const std::u16string& namespaceURI,
                                              const std::u16string& name);
  static xercesc::DOMElement* appendElementNS(xercesc::DOMElement* parent,
                                              const std::u16string& namespaceURI,
                                              const std::u16string& name);

  /// The first child element of that local name; null when there is none or `parent` is null.
  static xercesc::DOMElement* getElement(const xercesc::DOMElement* parent,
                                         std::u16string_view localName);
  /// All child elements of that local name, in document order; none when `parent` is null.
  static std::vector<xercesc::DOMElement*> getElements(const xercesc::DOMElement* parent,
                                                       std::u16string_view localName);

  /// The element's text content, CDATA included, comments left out. Returns false, and leaves
  /// `text` as it was, for a null element; an element without text gives true and "".
  static bool getElementText(const xercesc::DOMElement* element, std::u16string& text);
  /// The attribute without namespace of that name. Returns false, and leaves `value` as it was, for
  /// a null element or a missing attribute.
  static bool getElementAttribute(const xercesc::DOMElement* element, const std::u16string& name,
                                  std::u16string& value);

  /// Both throw InvalidXMLDocument for text with a U+0000, which DOM strings would cut off.
  static void setElementText(xercesc::DOMElement* element, const std::u16string& text);
  static void setElementAttribute(xercesc::DOMElement* element, const std::u16string& name,
                                  const std::u16string& value);
};

}  // namespace opc::model
