// SPDX-License-Identifier: MIT
#include "addon/packaging/AddonSystemRequirements.h"

#include "addon/packaging/DocumentElements.h"
#include "addon/packaging/DocumentXml.h"
#include "addon/packaging/HostStruct.h"

namespace addon::packaging {

using opc::model::XercesHelper;

namespace {

constexpr const char16_t* kPartName = u"/metadata/systemRequirements.xml";
constexpr const char16_t* kContentType =
    u"application/vnd.pellandry.korvan.addon.systemRequirements+xml";
constexpr const char16_t* kNamespacePath = u"/korvan/addon/2014/systemRequirements";
constexpr const char16_t* kRelationshipPath =
    u"/korvan/addon/2014/relationships/systemRequirements";

constexpr TextField<ProductDependency> kFields[] = {
    {"name", &ProductDependency::name},
    {"version", &ProductDependency::version},
    {"identifier", &ProductDependency::identifier},
};
using Xml = RequirementsXml;
constexpr TextAttribute<ProductDependency> kAttributes[] = {
    {Xml::kName, &ProductDependency::name},
    {Xml::kVersion, &ProductDependency::version},
    {Xml::kIdentifier, &ProductDependency::identifier},
};

struct DependencyList {
  const char* field;
  const char16_t* listElement;
  const char16_t* element;
  std::vector<ProductDependency> AddonSystemRequirements::*member;
};

constexpr DependencyList kLists[] = {
    {"productDependency", Xml::kProducts, Xml::kProduct,
     &AddonSystemRequirements::productDependencies},
    {"supportPackageDependency", Xml::kSupportPackages, Xml::kSupportPackage,
     &AddonSystemRequirements::supportPackageDependencies},
};

}  // namespace

ProductDependency::ProductDependency(const kxArray* element) {
  readTexts(*this, element, 0, kFields);
}

ProductDependency::ProductDependency(const xercesc::DOMElement* element) {
  readAttributes(*this, element, kAttributes);
}

kxArray* ProductDependency::createStructArray(std::size_t count) {
  return createStruct(count, fieldNames(kFields)).release();
}

void ProductDependency::addRow(kxArray* array, std::size_t index) const {
  writeTexts(*this, array, index, kFields);
}

void ProductDependency::populateXMLNode(xercesc::DOMElement* element,
                                        const std::u16string& /*namespaceURI*/) const {
  writeAttributes(*this, element, kAttributes);
}

AddonSystemRequirements::AddonSystemRequirements()
    : XMLPartType(kPartName, kContentType, SchemaRoot + kNamespacePath,
                  SchemaRoot + kRelationshipPath) {}

AddonSystemRequirements::AddonSystemRequirements(const kxArray* requirements)
    : AddonSystemRequirements() {
  for (const DependencyList& list : kLists) {
    this->*list.member = readRecords<ProductDependency>(kxGetField(requirements, 0, list.field));
  }
}

kxArray* AddonSystemRequirements::getStructArray() {
  constexpr const char* kNames[] = {kLists[0].field, kLists[1].field};
  ArrayPointer s = createStruct(1, kNames);
  for (const DependencyList& list : kLists) {
    const auto& dependencies = this->*list.member;
    if (dependencies.empty()) continue;
    setField(s.get(), 0, list.field, toStructArray(dependencies));
  }
  return s.release();
}

void AddonSystemRequirements::buildDOM(opc::model::DocumentPointer& document) {
  xercesc::DOMElement* root = XercesHelper::appendElementNS(document, namespaceURI, Xml::kRoot);
  for (const DependencyList& list : kLists) {
    const auto& dependencies = this->*list.member;
    if (dependencies.empty()) continue;
    auto* element = XercesHelper::appendElementNS(root, namespaceURI, list.listElement);
    appendRecords(element, namespaceURI, list.element, dependencies);
  }
}

void AddonSystemRequirements::populateFromDOM(xercesc::DOMDocument* document) {
  const xercesc::DOMElement* root = document->getDocumentElement();
  for (const DependencyList& list : kLists) (this->*list.member).clear();
  for (const DependencyList& list : kLists) {
    readChildRecords(XercesHelper::getElement(root, list.listElement), list.element,
                     this->*list.member);
  }
}

}  // namespace addon::packaging
