// SPDX-License-Identifier: MIT
#include "addon/packaging/AddonProperties.h"

#include <vector>

#include "addon/packaging/DocumentElements.h"
#include "addon/packaging/DocumentXml.h"
#include "addon/packaging/HostStruct.h"

namespace addon::packaging {

using opc::model::XercesHelper;

namespace {

constexpr const char16_t* kPartName = u"/metadata/addonProperties.xml";
// The one name that is not "addonProperties": packages in the field say it this way.
constexpr const char16_t* kContentType = u"application/vnd.pellandry.korvan.addon.properties+xml";
constexpr const char16_t* kNamespacePath = u"/korvan/addon/2014/addonProperties";
constexpr const char16_t* kRelationshipPath = u"/korvan/addon/2014/relationships/addonProperties";

constexpr TextField<AddonProperties> kFields[] = {
    {"type", &AddonProperties::type},
    {"name", &AddonProperties::name},
    {"version", &AddonProperties::version},
    {"KorvanRelease", &AddonProperties::KorvanRelease},
    {"summary", &AddonProperties::summary},
    {"authorName", &AddonProperties::authorName},
    {"authorContact", &AddonProperties::authorContact},
    {"authorOrganization", &AddonProperties::authorOrganization},
    {"GUID", &AddonProperties::GUID},
    {"description", &AddonProperties::description},
};

using Xml = PropertiesXml;

}  // namespace

AddonProperties::AddonProperties()
    : XMLPartType(kPartName, kContentType, SchemaRoot + kNamespacePath,
                  SchemaRoot + kRelationshipPath) {}

AddonProperties::AddonProperties(const kxArray* properties) : AddonProperties() {
  readTexts(*this, properties, 0, kFields);
}

kxArray* AddonProperties::getStructArray() {
  ArrayPointer s = createStruct(1, fieldNames(kFields));
  writeTexts(*this, s.get(), 0, kFields);
  return s.release();
}

void AddonProperties::buildDOM(opc::model::DocumentPointer& document) {
  xercesc::DOMElement* root = XercesHelper::appendElementNS(document, namespaceURI, Xml::kRoot);
  xercesc::DOMElement* identifier =
      XercesHelper::appendElementNS(root, namespaceURI, Xml::kIdentifier);
  XercesHelper::setElementAttribute(identifier, Xml::kIdentifierType, Xml::kGuid);
  XercesHelper::setElementText(identifier, GUID);
  appendTextElement(root, namespaceURI, Xml::kDescription, description);
  if (authorName.empty() && authorContact.empty() && authorOrganization.empty()) return;

  xercesc::DOMElement* authors = XercesHelper::appendElementNS(root, namespaceURI, Xml::kAuthors);
  xercesc::DOMElement* author = XercesHelper::appendElementNS(authors, namespaceURI, Xml::kAuthor);
  appendTextElement(author, namespaceURI, Xml::kName, authorName);
  appendTextElement(author, namespaceURI, Xml::kContact, authorContact);
  appendTextElement(author, namespaceURI, Xml::kOrganization, authorOrganization);
}

void AddonProperties::populateFromDOM(xercesc::DOMDocument* document) {
  const xercesc::DOMElement* root = document->getDocumentElement();
  readChildText(root, Xml::kIdentifier, GUID);
  readChildText(root, Xml::kDescription, description);

  const xercesc::DOMElement* author =
      XercesHelper::getElement(XercesHelper::getElement(root, Xml::kAuthors), Xml::kAuthor);
  readChildText(author, Xml::kName, authorName);
  readChildText(author, Xml::kContact, authorContact);
  readChildText(author, Xml::kOrganization, authorOrganization);
}

}  // namespace addon::packaging
