// SPDX-License-Identifier: MIT
#include "addon/packaging/AddonRevisionHistory.h"

#include "addon/packaging/DocumentElements.h"
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

constexpr const char16_t* kRoot = u"revisionHistory";
constexpr const char16_t* kRevision = u"revision";
constexpr TextAttribute<AddonRevision> kAttributes[] = {
    {u"date", &AddonRevision::date},
    {u"version", &AddonRevision::version},
};
constexpr const char16_t* kDescription = u"description";

}  // namespace

AddonRevision::AddonRevision(const kxArray* array, std::size_t index) {
  readTexts(*this, array, index, kFields);
}

AddonRevision::AddonRevision(const xercesc::DOMElement* element) {
  readAttributes(*this, element, kAttributes);
  readChildText(element, kDescription, description);
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
  appendTextElement(element, namespaceURI, kDescription, description);
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
  xercesc::DOMElement* root = XercesHelper::appendElementNS(document, namespaceURI, kRoot);
  appendRecords(root, namespaceURI, kRevision, revisions);
}

void AddonRevisionHistory::populateFromDOM(xercesc::DOMDocument* document) {
  revisions = readChildRecords<AddonRevision>(document->getDocumentElement(), kRevision);
}

}  // namespace addon::packaging
