// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "opc/Streams.h"
#include "opc/Text.h"
#include "opc/model/FormatConstants.h"

namespace opc::model {

/// The name of an element or attribute, its prefix resolved.
struct XmlName {
  std::u16string_view namespaceUri;   ///< "" for no namespace
  std::u16string_view localName;      ///< without its prefix
  std::u16string_view qualifiedName;  ///< as the document spells it

  /// For messages.
  std::string shown() const { return toUtf8ForDisplay(qualifiedName); }
};

struct XmlAttribute {
  XmlName name;
  std::u16string_view value;

  bool isNamespaceDeclaration() const { return name.namespaceUri == kXmlnsNamespace; }
};

/// An element or a text of a document that is read in pieces. Whoever hands it out owns it and all
/// that it refers to.
struct XmlNode {
  enum class Kind : std::uint8_t { Element, Text };

  bool isElement() const { return kind == Kind::Element; }
  /// Null if there is none. Without `namespaceUri`, the name has no namespace.
  const XmlAttribute* findAttribute(std::u16string_view localName) const {
    return findAttribute({}, localName);
  }
  const XmlAttribute* findAttribute(std::u16string_view namespaceUri,
                                    std::u16string_view localName) const {
    for (const XmlAttribute& attribute : attributes) {
      const XmlName& is = attribute.name;
      if (is.localName == localName && is.namespaceUri == namespaceUri) return &attribute;
    }
    return nullptr;
  }

  Kind kind = Kind::Element;
  XmlName name;                              ///< of an element
  std::span<const XmlAttribute> attributes;  ///< of an element, namespace declarations among them
  std::u16string_view text;                  ///< of a text
  const XmlNode* firstChild = nullptr;       ///< of an element
  const XmlNode* next = nullptr;             ///< the next child of the same element
};

/// Takes a document in pieces, so that it never is in memory as a whole.
class DocumentPieces {
 public:
  virtual ~DocumentPieces() = default;

  /// The root element with its attributes; its content is not there. It stays until the end.
  virtual void startRoot(const XmlNode& root) = 0;
  /// A child of the root with all that is below it, in document order. It is gone after the call.
  /// Text may come as several nodes.
  virtual void takeChild(const XmlNode& child) = 0;
};

inline constexpr std::size_t kMaxPieceSize = 4u << 20;   ///< bytes
inline constexpr std::size_t kMaxPieceNodes = 1u << 16;  ///< elements and attributes

/// Parses all of `stream` and hands it to `pieces` meanwhile, which may throw. Refuses a child of
/// the root, and a comment, of more than kMaxPieceSize bytes or kMaxPieceNodes nodes. Throws
/// InvalidXMLDocument, and what the stream throws.
void parsePieces(InputStream& stream, DocumentPieces& pieces);

}  // namespace opc::model
