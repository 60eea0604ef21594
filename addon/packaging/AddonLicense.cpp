// SPDX-License-Identifier: MIT
#include "addon/packaging/AddonLicense.h"

#include "addon/packaging/DocumentXml.h"
#include "addon/packaging/HostStruct.h"

namespace addon::packaging {

using opc::model::XercesHelper;

namespace {

constexpr const char16_t* kPartName = u"/metadata/license.xml";
constexpr const char16_t* kContentType = u"application/vnd.pellandry.korvan.addon.license+xml";
constexpr const char16_t* kNamespacePath = u"/korvan/addon/2014/license";
constexpr const char16_t* kRelationshipPath = u"/korvan/addon/2014/relationships/license";

constexpr TextField<AddonLicense> kFields[] = {
    {"type", &AddonLicense::type},
    {"text", &AddonLicense::text},
};

using Xml = LicenseXml;

}  // namespace

AddonLicense::AddonLicense()
    : XMLPartType(kPartName, kContentType, SchemaRoot + kNamespacePath,
                  SchemaRoot + kRelationshipPath) {}

AddonLicense::AddonLicense(const kxArray* s) : AddonLicense() {
  readTexts(*this, s, 0, kFields);
}

kxArray* AddonLicense::getStructArray() {
  ArrayPointer s = createStruct(1, fieldNames(kFields));
  writeTexts(*this, s.get(), 0, kFields);
  return s.release();
}

void AddonLicense::buildDOM(opc::model::DocumentPointer& document) {
  xercesc::DOMElement* root = XercesHelper::appendElementNS(document, namespaceURI, Xml::kRoot);
  xercesc::DOMElement* terms = XercesHelper::appendElementNS(root, namespaceURI, Xml::kLicenseText);
  XercesHelper::setElementAttribute(terms, Xml::kType, type);
  XercesHelper::setElementText(terms, text);
}

void AddonLicense::populateFromDOM(xercesc::DOMDocument* document) {
  const xercesc::DOMElement* terms =
      XercesHelper::getElement(document->getDocumentElement(), Xml::kLicenseText);
  XercesHelper::getElementText(terms, text);
  XercesHelper::getElementAttribute(terms, Xml::kType, type);
}

}  // namespace addon::packaging
