// SPDX-License-Identifier: MIT
#include "addon/packaging/AddonAppInstallList.h"

#include "addon/packaging/DocumentElements.h"
#include "addon/packaging/DocumentXml.h"
#include "addon/packaging/HostStruct.h"

namespace addon::packaging {

using opc::model::XercesHelper;

namespace {

constexpr const char16_t* kPartName = u"/metadata/applications.xml";
constexpr const char16_t* kContentType = u"application/vnd.pellandry.korvan.addon.applications+xml";
constexpr const char16_t* kNamespacePath = u"/korvan/addon/2014/applications";
constexpr const char16_t* kRelationshipPath = u"/korvan/addon/2014/relationships/applications";

constexpr TextField<AddonAppInstall> kTextFields[] = {
    {"name", &AddonAppInstall::name},
    {"guid", &AddonAppInstall::guid},
    {"relativePath", &AddonAppInstall::relativePath},
};
constexpr const char* kFlagField = "installByDefault";

using Xml = AppsXml;
constexpr TextAttribute<AddonAppInstall> kAttributes[] = {
    {Xml::kName, &AddonAppInstall::name},
    {Xml::kGuid, &AddonAppInstall::guid},
};

}  // namespace

AddonAppInstall::AddonAppInstall(const kxArray* array, std::size_t index) {
  readTexts(*this, array, index, kTextFields);
  installByDefault = isNotFalse(readText(array, index, kFlagField));
}

AddonAppInstall::AddonAppInstall(const xercesc::DOMElement* element) {
  readAttributes(*this, element, kAttributes);
  std::u16string flag;
  XercesHelper::getElementAttribute(element, Xml::kInstallByDefault, flag);
  installByDefault = isTrue(flag);
  readChildText(element, Xml::kFile, relativePath);
}

kxArray* AddonAppInstall::createStructArray(std::size_t count) {
  constexpr const char* kNames[] = {kTextFields[0].name, kTextFields[1].name, kTextFields[2].name,
                                    kFlagField};
  return createStruct(count, kNames).release();
}

void AddonAppInstall::addRow(kxArray* array, std::size_t index) const {
  writeTexts(*this, array, index, kTextFields);
  setField(array, index, kFlagField, toFlag(installByDefault));
}

void AddonAppInstall::populateXMLNode(xercesc::DOMElement* element,
                                      const std::u16string& namespaceURI) const {
  writeAttributes(*this, element, kAttributes);
  XercesHelper::setElementAttribute(element, Xml::kInstallByDefault, flagText(installByDefault));
  appendTextElement(element, namespaceURI, Xml::kFile, relativePath);
}

AddonAppInstallList::AddonAppInstallList()
    : XMLPartType(kPartName, kContentType, SchemaRoot + kNamespacePath,
                  SchemaRoot + kRelationshipPath) {}

AddonAppInstallList::AddonAppInstallList(const kxArray* s) : AddonAppInstallList() {
  apps = readElements<AddonAppInstall>(s);
}

kxArray* AddonAppInstallList::getStructArray() {
  return toStructArray(apps).release();
}

void AddonAppInstallList::buildDOM(opc::model::DocumentPointer& document) {
  xercesc::DOMElement* root = XercesHelper::appendElementNS(document, namespaceURI, Xml::kRoot);
  appendRecords(root, namespaceURI, Xml::kApplication, apps);
}

void AddonAppInstallList::populateFromDOM(xercesc::DOMDocument* document) {
  readChildRecords(document->getDocumentElement(), Xml::kApplication, apps);
}

}  // namespace addon::packaging
