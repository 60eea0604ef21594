// SPDX-License-Identifier: MIT
#include "addon/packaging/AddonConfiguration.h"

#include "addon/packaging/DocumentElements.h"
#include "addon/packaging/DocumentXml.h"
#include "addon/packaging/HostStruct.h"

namespace addon::packaging {

using opc::model::XercesHelper;

namespace {

constexpr const char16_t* kPartName = u"/metadata/configuration.xml";
constexpr const char16_t* kContentType =
    u"application/vnd.pellandry.korvan.addon.configuration+xml";
constexpr const char16_t* kNamespacePath = u"/korvan/addon/2014/configuration";
constexpr const char16_t* kRelationshipPath = u"/korvan/addon/2014/relationships/configuration";

using Xml = ConfigurationXml;

struct PathList {
  const char* field;
  const char16_t* listElement;
  const char16_t* pathElement;
  std::vector<std::u16string> AddonConfiguration::*member;
};

constexpr PathList kLists[] = {
    {"korvanPaths", Xml::kKorvanPaths, Xml::kKorvanPath, &AddonConfiguration::korvanPaths},
    {"javaClassPaths", Xml::kJavaClassPaths, Xml::kJavaClassPath,
     &AddonConfiguration::javaClassPaths},
};

}  // namespace

AddonConfiguration::AddonConfiguration()
    : XMLPartType(kPartName, kContentType, SchemaRoot + kNamespacePath,
                  SchemaRoot + kRelationshipPath) {}

AddonConfiguration::AddonConfiguration(const kxArray* s) : AddonConfiguration() {
  for (const PathList& list : kLists) this->*list.member = readOptionalTexts(s, 0, list.field);
}

kxArray* AddonConfiguration::getStructArray() {
  constexpr const char* kNames[] = {kLists[0].field, kLists[1].field};
  ArrayPointer s = createStruct(1, kNames);
  for (const PathList& list : kLists) {
    setField(s.get(), 0, list.field, toTextCell(this->*list.member));
  }
  return s.release();
}

void AddonConfiguration::buildDOM(opc::model::DocumentPointer& document) {
  xercesc::DOMElement* root = XercesHelper::appendElementNS(document, namespaceURI, Xml::kRoot);
  for (const PathList& list : kLists) {
    const auto& paths = this->*list.member;
    if (paths.empty()) continue;
    auto* element = XercesHelper::appendElementNS(root, namespaceURI, list.listElement);
    for (const std::u16string& path : paths) {
      appendTextElement(element, namespaceURI, list.pathElement, path);
    }
  }
}

void AddonConfiguration::populateFromDOM(xercesc::DOMDocument* document) {
  const xercesc::DOMElement* root = document->getDocumentElement();
  for (const PathList& list : kLists) (this->*list.member).clear();
  for (const PathList& list : kLists) {
    readChildTexts(XercesHelper::getElement(root, list.listElement), list.pathElement,
                   this->*list.member);
  }
}

}  // namespace addon::packaging
