// SPDX-License-Identifier: MIT
#include "addon/packaging/DocumentElements.h"

namespace addon::packaging {

using opc::model::XercesHelper;

void appendTextElement(xercesc::DOMElement* parent, const std::u16string& namespaceURI,
                       const std::u16string& name, const std::u16string& text) {
  XercesHelper::setElementText(XercesHelper::appendElementNS(parent, namespaceURI, name), text);
}

void readChildText(const xercesc::DOMElement* parent, std::u16string_view name,
                   std::u16string& text) {
  XercesHelper::getElementText(XercesHelper::getElement(parent, name), text);
}

void readChildTexts(const xercesc::DOMElement* parent, std::u16string_view name,
                    std::vector<std::u16string>& texts) {
  texts.clear();
  for (const xercesc::DOMElement* element : XercesHelper::getElements(parent, name)) {
    std::u16string text;
    if (XercesHelper::getElementText(element, text)) texts.push_back(text);
  }
}

}  // namespace addon::packaging
