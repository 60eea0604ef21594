// SPDX-License-Identifier: MIT
#include "opc/plservices/HostPropertiesPart.h"

#include "opc/model/XercesHelper.h"
#include "opc/plservices/SchemaRoot.h"

namespace opc::plservices {
namespace {

using model::XercesHelper;

struct Field {
  const char16_t* name;
  std::u16string HostPropertiesPart::*value;
};
constexpr Field kFields[] = {
    {HostPropertiesPart::kContentTypeElement, &HostPropertiesPart::contentType},
    {HostPropertiesPart::kFriendlyNameElement, &HostPropertiesPart::contentTypeFriendlyName},
    {HostPropertiesPart::kReleaseElement, &HostPropertiesPart::korvanRelease},
};

}  // namespace

std::u16string HostPropertiesPart::namespaceURI() {
  return SchemaRoot + u"/korvan/addon/2014/hostProperties";
}

std::u16string HostPropertiesPart::relationshipType() {
  return SchemaRoot + u"/korvan/addon/2014/relationships/hostProperties";
}

void HostPropertiesPart::write(OutputStream& stream) const {
  const model::DocumentPointer document = XercesHelper::createDocument();
  document->setXmlStandalone(true);
  xercesc::DOMElement* root = XercesHelper::appendElementNS(document, namespaceURI(), kRoot);
  for (const Field& field : kFields) {
    xercesc::DOMElement* element = XercesHelper::appendElementNS(root, namespaceURI(), field.name);
    XercesHelper::setElementText(element, this->*field.value);
  }
  XercesHelper::writeDocumentToStream(XercesHelper::createWriter(), document, stream);
}

HostPropertiesPart HostPropertiesPart::read(InputStream& stream) {
  const model::ParserPointer parser = XercesHelper::createParser();
  const xercesc::DOMDocument* document =
      XercesHelper::readDocumentFromStream(parser, stream, false, u"", namespaceURI());
  HostPropertiesPart part;
  for (const Field& field : kFields) {
    XercesHelper::getElementText(
        XercesHelper::getElement(document->getDocumentElement(), field.name), part.*field.value);
  }
  return part;
}

}  // namespace opc::plservices
