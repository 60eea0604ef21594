// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>
#include <vector>
#include <xercesc/dom/DOM.hpp>

#include "addon/packaging/Field.h"
#include "opc/model/XercesHelper.h"

// The elements of a document as its table places them. Reading is lenient: what is missing keeps
// what the record holds, lists apart, and of an element that is not repeated the first one counts.

namespace addon::packaging {

struct DocumentTable;

/// An element and what may stand in it.
struct Element {
  struct Attribute {
    std::u16string name;
    const Field* field = nullptr;  ///< its value; null for a constant and for a selector
    std::u16string constant = {};
  };
  /// What an element is when its selector has this value.
  struct Choice {
    std::u16string value;
    const Field* field;
  };

  std::u16string name;
  std::vector<Attribute> attributes = {};
  std::vector<Element> children = {};
  bool isRequired = false;      ///< in the element that it belongs into
  const Field* text = nullptr;  ///< the field that the text belongs to
  const Field* list = nullptr;  ///< of an element that is repeated: the list
  /// Of elements that an attribute, the only one, tells apart: what there is. The last of several
  /// with the same value counts, but for lists.
  std::vector<Choice> choices = {};

  /// Whether it only holds other elements, and is left out when nothing is in them.
  bool isWrapper() const;
};

/// The root element of a document; the element of a record, without a name.
Element elementOf(const DocumentTable& table);
Element elementOf(const RecordTable& table);

/// Appends the root element to an empty document.
void writeXml(const Element& root, const ConstRecord& record,
              const opc::model::DocumentPointer& document, const std::u16string& namespaceURI);
/// Fills an element.
void writeXml(const Element& element, const ConstRecord& record, xercesc::DOMElement* dom,
              const std::u16string& namespaceURI);

/// Reads an element, which may be null.
void readXml(const Element& element, const Record& record, const xercesc::DOMElement* dom);

/// An element that is read from a document.
struct FoundElement {
  const Element& element;
  const xercesc::DOMElement* dom;
  const RecordTable* table;  ///< of the innermost record that it belongs to; null outside of lists
  std::u16string name;       ///< that record's name
};

/// Calls `visit` for each element that readXml() would read, in document order within each list.
void visitElements(const Element& root, const xercesc::DOMElement* dom,
                   const std::function<void(const FoundElement&)>& visit);

/// Those of them that the entries of a list stand in, or the value of another member.
std::vector<const xercesc::DOMElement*> elementsOf(const Element& root,
                                                   const xercesc::DOMElement* dom,
                                                   const Member& member);

/// A value in such an element.
struct FoundValue {
  const FoundElement& in;
  const Field& field;
  std::u16string text;
  std::u16string_view choice;  ///< the value of the selector, if there is one
};

/// The same for each value that is there.
void visitValues(const Element& root, const xercesc::DOMElement* dom,
                 const std::function<void(const FoundValue&)>& visit);

}  // namespace addon::packaging
