// SPDX-License-Identifier: MIT
#include "opc/plservices/CorePropertiesPart.h"

#include "opc/model/FormatConstants.h"
#include "opc/model/XercesErrors.h"
#include "opc/model/XercesHelper.h"
#include "opc/plservices/W3cDateTime.h"
#include "opc/plservices/detail/CorePropertiesReader.h"
#include "opc/plservices/detail/CorePropertiesSchema.h"

namespace opc::plservices {
namespace {

using model::XercesHelper;
using xercesc::DOMElement;

constexpr std::u16string_view kDateTypeWithPrefix = u"dcterms:W3CDTF";

struct Prefix {
  const char16_t* declaration;
  std::u16string_view space;
};
constexpr Prefix kPrefixes[] = {
    {u"xmlns:dc", detail::schema::kElements},
    {u"xmlns:dcterms", detail::schema::kTerms},
    {u"xmlns:xsi", model::kSchemaInstanceNamespace},
};

/// Xerces-C would take it for the end of the text.
void refuseNul(const std::u16string& text) {
  if (text.find(u'\0') == std::u16string::npos) return;
  throw model::InvalidXMLDocument("a property holds U+0000, which XML cannot carry", 0, 0);
}

void setAttribute(DOMElement& element, std::u16string_view space, const std::u16string& name,
                  const std::u16string& value) {
  refuseNul(value);
  model::translatingXercesErrors("cannot write core properties", [&] {
    element.setAttributeNS(std::u16string(space).c_str(), name.c_str(), value.c_str());
  });
}

std::u16string prefixed(std::u16string_view space, std::u16string_view name) {
  const char16_t* prefix = space == detail::schema::kTerms      ? u"dcterms:"
                           : space == detail::schema::kElements ? u"dc:"
                                                                : u"cp:";
  return prefix + std::u16string(name);
}

// Appends elements to the root of a document; every prefix is declared there.
class Writer {
 public:
  explicit Writer(const model::DocumentPointer& document)
      : root_(
            XercesHelper::appendElementNS(document, std::u16string(detail::schema::kCore),
                                          prefixed(detail::schema::kCore, detail::schema::kRoot))) {
    for (const Prefix& prefix : kPrefixes) {
      setAttribute(*root_, model::kXmlnsNamespace, prefix.declaration,
                   std::u16string(prefix.space));
    }
  }

  DOMElement* append(std::u16string_view space, std::u16string_view name,
                     const std::u16string& text) {
    DOMElement* element = appendTo(root_, space, name);
    XercesHelper::setElementText(element, text);
    return element;
  }

  void appendDate(const detail::schema::DateElement& schemaElement, const std::u16string& date) {
    DOMElement* element = append(schemaElement.space, schemaElement.name, date);
    if (schemaElement.space == detail::schema::kTerms) {
      setAttribute(*element, model::kSchemaInstanceNamespace, u"xsi:type",
                   std::u16string(kDateTypeWithPrefix));
    }
  }

  void appendKeywords(const Keywords& keywords) {
    DOMElement* element = append(detail::schema::kCore, detail::schema::kKeywords, u"");
    setLanguage(*element, keywords.language);
    for (const Keywords::Piece& piece : keywords.pieces) appendPiece(*element, piece);
  }

 private:
  static DOMElement* appendTo(DOMElement* parent, std::u16string_view space,
                              std::u16string_view name) {
    return XercesHelper::appendElementNS(parent, std::u16string(space), prefixed(space, name));
  }

  static void setLanguage(DOMElement& element, const std::optional<std::u16string>& language) {
    if (language) setAttribute(element, model::kXmlNamespace, u"xml:lang", *language);
  }

  static void appendPiece(DOMElement& keywords, const Keywords::Piece& piece) {
    if (!piece.isValue) {
      refuseNul(piece.text);
      model::translatingXercesErrors("cannot write core properties", [&] {
        keywords.appendChild(keywords.getOwnerDocument()->createTextNode(piece.text.c_str()));
      });
      return;
    }
    DOMElement* value = appendTo(&keywords, detail::schema::kCore, detail::schema::kValue);
    setLanguage(*value, piece.language);
    XercesHelper::setElementText(value, piece.text);
  }

  DOMElement* root_;
};

}  // namespace

void CorePropertiesPart::write(OutputStream& stream) const {
  const model::DocumentPointer document = XercesHelper::createDocument();
  document->setXmlStandalone(true);
  Writer writer(document);
  for (const detail::schema::TextElement& element : detail::schema::kTextElements) {
    // The element for the content type left the standard's schema with its second edition.
    if (element.property == TextProperty::ContentType || !text(element.property)) continue;
    writer.append(element.space, element.name, *text(element.property));
  }
  if (keywords_) writer.appendKeywords(*keywords_);
  for (const detail::schema::DateElement& element : detail::schema::kDateElements) {
    const std::u16string text = dateText(element.property);
    if (!text.empty()) writer.appendDate(element, text);
  }
  XercesHelper::writeDocumentToStream(XercesHelper::createWriter(), document, stream);
}

// Empty for a date that is absent.
std::u16string CorePropertiesPart::dateText(DateProperty property) const {
  if (const auto& known = date(property)) return formatW3cDateTime(*known);
  return distantDate(property);
}

CorePropertiesPart CorePropertiesPart::read(InputStream& stream, model::FaultSink& faults) {
  const model::ParserPointer parser = XercesHelper::createParser();
  const xercesc::DOMDocument* document = XercesHelper::readDocumentFromStream(
      parser, stream, false, u"", std::u16string(detail::schema::kCore));
  CorePropertiesPart part;
  model::translatingXercesErrors("cannot read core properties", [&] {
    detail::readCoreProperties(*document->getDocumentElement(), part, faults);
  });
  return part;
}

}  // namespace opc::plservices
