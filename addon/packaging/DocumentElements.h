// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>
#include <xercesc/dom/DOM.hpp>

#include "opc/model/XercesHelper.h"

// How documents become XML and come back: one rule a function, for all of them. Reading is lenient:
// what is missing keeps what the record holds, and a null element has nothing.

namespace addon::packaging {

/// An attribute that holds one text of a record.
template <typename Record>
struct TextAttribute {
  const char16_t* name;
  std::u16string Record::*member;
};

// Writing.

/// Appends the element `name` with a text to `parent`.
void appendTextElement(xercesc::DOMElement* parent, const std::u16string& namespaceURI,
                       const std::u16string& name, const std::u16string& text);

/// Sets every attribute of the table, in order, also those that are empty.
template <typename Record, std::size_t N>
void writeAttributes(const Record& record, xercesc::DOMElement* element,
                     const TextAttribute<Record> (&attributes)[N]) {
  for (const auto& attribute : attributes) {
    opc::model::XercesHelper::setElementAttribute(element, attribute.name,
                                                  record.*attribute.member);
  }
}

/// Appends one element `name` a record. A record class offers populateXMLNode(element,
/// namespaceURI), which fills the element.
template <typename Record>
void appendRecords(xercesc::DOMElement* parent, const std::u16string& namespaceURI,
                   const std::u16string& name, const std::vector<Record>& records) {
  for (const Record& record : records) {
    record.populateXMLNode(opc::model::XercesHelper::appendElementNS(parent, namespaceURI, name),
                           namespaceURI);
  }
}

// Reading.

/// Reads every attribute of the table, in order.
template <typename Record, std::size_t N>
void readAttributes(Record& record, const xercesc::DOMElement* element,
                    const TextAttribute<Record> (&attributes)[N]) {
  for (const auto& attribute : attributes) {
    opc::model::XercesHelper::getElementAttribute(element, attribute.name,
                                                  record.*attribute.member);
  }
}

/// The text of the first child element `name`. Without that element `text` keeps what it holds.
void readChildText(const xercesc::DOMElement* parent, std::u16string_view name,
                   std::u16string& text);

/// Replaces `texts` by those of all child elements `name`, in document order. When one cannot be
/// read, those before it are there.
void readChildTexts(const xercesc::DOMElement* parent, std::u16string_view name,
                    std::vector<std::u16string>& texts);

/// The same with records, each constructed from its element.
template <typename Record>
void readChildRecords(const xercesc::DOMElement* parent, std::u16string_view name,
                      std::vector<Record>& records) {
  records.clear();
  for (const xercesc::DOMElement* element : opc::model::XercesHelper::getElements(parent, name)) {
    records.emplace_back(element);
  }
}

}  // namespace addon::packaging
