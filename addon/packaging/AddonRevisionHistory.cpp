// SPDX-License-Identifier: MIT
#include "addon/packaging/AddonRevisionHistory.h"

#include "addon/packaging/DocumentElements.h"
#include "addon/packaging/DocumentXml.h"
#include "addon/packaging/HostStruct.h"

namespace addon::packaging {

using opc::model::XercesHelper;

namespace {

constexpr const char16_t* kPartName = u"/metadata/revisionHistory.xml";
constexpr const char16_t* kContentType =
    u"application/vnd.pellandry.korvan.addon.revisionHistory+xml";
constexpr const char16_t* kNamespacePath = u"/korvan/addon/2014/revisionHistory";
constexpr const char16_t* kRelationshipPath = u"/korvan/addon/2014/relationships/revisionHistory";

constexpr TextField<AddonRevision> kFields[] = {
    {"date", &AddonRevision::date},
    {"version", &AddonRevision::version},
    {"description", &AddonRevision::description},
};

using Xml = RevisionsXml;
constexpr TextAttribute<AddonRevision> kAttributes[] = {
    {Xml::kDate, &AddonRevision::date},
    {Xml::kVersion, &AddonRevision::version},
};

}  // namespace

AddonRevision::AddonRevision(const kxArray* array, std::size_t index) {
  readTexts(*this, array, index, kFields);
}

AddonRevision::AddonRevision(const xercesc::DOMElement* element) {
  readAttributes(*this, element, kAttributes);
  readChildText(element, Xml::kDescription, description);
}

kxArray* AddonRevision::createStructArray(std::size_t count) {
  return createStruct(count, fieldNames(kFields)).release();
}

void AddonRevision::addRow(kxArray* array, std::size_t index) const {
  writeTexts(*this, array, index, kFields);
}

void AddonRevision::populateXMLNode(xercesc::DOMElement* element,
                                    const std::u16string& namespaceURI) const {
  writeAttributes(*this, element, kAttributes);
  appendTextElement(element, namespaceURI, Xml::kDescription, description);
}

AddonRevisionHistory::AddonRevisionHistory()
    : XMLPartType(kPartName, kContentType, SchemaRoot + kNamespacePath,
                  SchemaRoot + kRelationshipPath) {}

AddonRevisionHistory::AddonRevisionHistory(const kxArray* s) : AddonRevisionHistory() {
  revisions = readElements<AddonRevision>(s);
}

kxArray* AddonRevisionHistory::getStructArray() {
  return toStructArray(revisions).release();
}

void AddonRevisionHistory::buildDOM(opc::model::DocumentPointer& document) {
  xercesc::DOMElement* root = XercesHelper::appendElementNS(document, namespaceURI, Xml::kRoot);
  appendRecords(root, namespaceURI, Xml::kRevision, revisions);
}

void AddonRevisionHistory::populateFromDOM(xercesc::DOMDocument* document) {
  readChildRecords(document->getDocumentElement(), Xml::kRevision, revisions);
}

}  // namespace addon::packaging
