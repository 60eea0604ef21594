// SPDX-License-Identifier: MIT
#include "addon/packaging/AddonProperties.h"

#include <vector>

#include "addon/packaging/DocumentElements.h"
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

constexpr const char16_t* kRoot = u"addonProperties";
constexpr const char16_t* kIdentifier = u"identifier";
constexpr const char16_t* kIdentifierType = u"type";
constexpr const char16_t* kGuid = u"GUID";
constexpr const char16_t* kDescription = u"description";
constexpr const char16_t* kAuthors = u"authors";
constexpr const char16_t* kAuthor = u"author";
constexpr const char16_t* kName = u"name";
constexpr const char16_t* kContact = u"contact";
constexpr const char16_t* kOrganization = u"organization";

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
  xercesc::DOMElement* root = XercesHelper::appendElementNS(document, namespaceURI, kRoot);
  xercesc::DOMElement* identifier = XercesHelper::appendElementNS(root, namespaceURI, kIdentifier);
  XercesHelper::setElementAttribute(identifier, kIdentifierType, kGuid);
  XercesHelper::setElementText(identifier, GUID);
  appendTextElement(root, namespaceURI, kDescription, description);
  if (authorName.empty() && authorContact.empty() && authorOrganization.empty()) return;

  xercesc::DOMElement* authors = XercesHelper::appendElementNS(root, namespaceURI, kAuthors);
  xercesc::DOMElement* author = XercesHelper::appendElementNS(authors, namespaceURI, kAuthor);
  appendTextElement(author, namespaceURI, kName, authorName);
  appendTextElement(author, namespaceURI, kContact, authorContact);
  appendTextElement(author, namespaceURI, kOrganization, authorOrganization);
}

void AddonProperties::populateFromDOM(xercesc::DOMDocument* document) {
  const xercesc::DOMElement* root = document->getDocumentElement();
  readChildText(root, kIdentifier, GUID);
  readChildText(root, kDescription, description);

  const xercesc::DOMElement* author =
      XercesHelper::getElement(XercesHelper::getElement(root, kAuthors), kAuthor);
  readChildText(author, kName, authorName);
  readChildText(author, kContact, authorContact);
  readChildText(author, kOrganization, authorOrganization);
}

}  // namespace addon::packaging
