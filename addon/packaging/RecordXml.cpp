// SPDX-License-Identifier: MIT
#include "addon/packaging/RecordXml.h"

#include <algorithm>
#include <string_view>

#include "addon/packaging/DocumentTable.h"
#include "addon/packaging/HostStruct.h"
#include "opc/Text.h"

namespace addon::packaging {

using opc::model::XercesHelper;
using xercesc::DOMElement;

namespace {

// From places to elements.

template <typename Named>
Named& findOrAdd(std::vector<Named>& all, const std::u16string& name) {
  const auto found =
      std::find_if(all.begin(), all.end(), [&](const Named& one) { return one.name == name; });
  return found == all.end() ? all.emplace_back(Named{name}) : *found;
}

void placeFields(const RecordTable& table, Element& element);

/// A step with a selector, "file[@type=main]".
void placeChoice(std::string_view step, const Field& field, Element& parent) {
  const std::size_t open = step.find("[@");
  const std::size_t equals = step.find('=');
  Element& element = findOrAdd(parent.children, opc::fromUtf8(step.substr(0, open)));
  findOrAdd(element.attributes, opc::fromUtf8(step.substr(open + 2, equals - open - 2)));
  element.choices.push_back(
      {opc::fromUtf8(step.substr(equals + 1, step.size() - equals - 2)), &field});
}

void placeText(const Field& field, Element& element) {
  element.isRequired = field.isElementRequired;
  (field.isList() ? element.list : element.text) = &field;
  if (field.kind() == FieldKind::Records) placeFields(field.table(), element);
}

void placeField(std::string_view place, const Field* field, std::string_view constant,
                Element& element) {
  const std::size_t slash = place.find('/');
  const std::string_view step = place.substr(0, slash);
  if (step.starts_with('@')) {
    Element::Attribute& attribute = findOrAdd(element.attributes, opc::fromUtf8(step.substr(1)));
    attribute.field = field;
    attribute.constant = opc::fromUtf8(constant);
  } else if (step.ends_with(']')) {
    placeChoice(step, *field, element);
  } else {
    Element& child = findOrAdd(element.children, opc::fromUtf8(step));
    if (slash == place.npos) return placeText(*field, child);
    placeField(place.substr(slash + 1), field, constant, child);
  }
}

void placeFields(const RecordTable& table, Element& element) {
  for (const Field& field : table.fields) {
    if (*field.xml != '\0') placeField(field.xml, &field, "", element);
  }
  for (const XmlConstant& one : table.constants) placeField(one.xml, nullptr, one.value, element);
  std::stable_partition(element.children.begin(), element.children.end(),
                        [](const Element& child) { return !child.isWrapper(); });
}

// Writing.

std::u16string valueOf(const Element::Attribute& attribute, const ConstRecord& record) {
  if (attribute.field == nullptr) return attribute.constant;
  const Field& field = *attribute.field;
  return field.kind() == FieldKind::Flag ? flagText(record.flag(field)) : record.text(field);
}

bool isEmpty(const Element& element, const ConstRecord& record) {
  if (element.list != nullptr) return record.isEmpty(*element.list);
  if (element.text != nullptr) return record.isEmpty(*element.text);
  return std::all_of(element.children.begin(), element.children.end(),
                     [&](const Element& child) { return isEmpty(child, record); });
}

/// Writes what one element of a record says into `parent`.
class ChildWriter {
 public:
  ChildWriter(const Element& element, const ConstRecord& record, DOMElement* parent,
              const std::u16string& namespaceURI)
      : element_(element), record_(record), parent_(parent), namespaceURI_(namespaceURI) {}

  void write() const {
    if (!element_.choices.empty()) return writeChoices();
    if (element_.list != nullptr) return writeList(*element_.list);
    if (element_.isWrapper() && isEmpty(element_, record_)) return;
    writeXml(element_, record_, append(), namespaceURI_);
  }

 private:
  DOMElement* append() const {
    return XercesHelper::appendElementNS(parent_, namespaceURI_, element_.name);
  }

  void writeList(const Field& list) const {
    if (list.kind() == FieldKind::Texts) {
      for (const auto& text : record_.texts(list)) XercesHelper::setElementText(append(), text);
      return;
    }
    for (std::size_t i = 0; i < record_.size(list); ++i) {
      writeXml(element_, record_.at(list, i), append(), namespaceURI_);
    }
  }

  void writeChoices() const {
    for (const Element::Choice& choice : element_.choices) {
      if (record_.isEmpty(*choice.field)) continue;
      if (choice.field->kind() == FieldKind::Text) {
        writeChoice(choice, record_.text(*choice.field));
      } else {
        for (const auto& text : record_.texts(*choice.field)) writeChoice(choice, text);
      }
    }
  }

  void writeChoice(const Element::Choice& choice, const std::u16string& text) const {
    DOMElement* dom = append();
    XercesHelper::setElementAttribute(dom, element_.attributes.front().name, choice.value);
    XercesHelper::setElementText(dom, text);
  }

  const Element& element_;
  const ConstRecord& record_;
  DOMElement* parent_;
  const std::u16string& namespaceURI_;
};

// Reading.

std::u16string attributeOf(const DOMElement* dom, const std::u16string& name) {
  std::u16string value;
  XercesHelper::getElementAttribute(dom, name, value);
  return value;
}

/// Null for an element without a choice, and for a value that is not one of them.
const Element::Choice* choiceOf(const Element& element, const DOMElement* dom) {
  if (element.choices.empty()) return nullptr;
  const std::u16string value = attributeOf(dom, element.attributes.front().name);
  const auto found = std::find_if(element.choices.begin(), element.choices.end(),
                                  [&](const auto& choice) { return choice.value == value; });
  return found == element.choices.end() ? nullptr : &*found;
}

void readValue(const Field& field, const Record& record, const std::u16string& text) {
  if (field.kind() == FieldKind::Flag) {
    record.flag(field) = isTrue(text);
  } else if (field.kind() == FieldKind::Texts) {
    record.texts(field).push_back(text);
  } else {
    record.text(field) = text;
  }
}

void readText(const Field& field, const Record& record, const DOMElement* dom) {
  std::u16string text;
  if (XercesHelper::getElementText(dom, text)) readValue(field, record, text);
}

void readList(const Element& element, const Record& record, const DOMElement* parent) {
  const Field& list = *element.list;
  record.clear(list);
  for (const DOMElement* dom : XercesHelper::getElements(parent, element.name)) {
    if (list.kind() == FieldKind::Texts) {
      readText(list, record, dom);
    } else {
      readXml(element, record.append(list), dom);
    }
  }
}

void readChoices(const Element& element, const Record& record, const DOMElement* parent) {
  for (const Element::Choice& choice : element.choices) {
    if (choice.field->kind() == FieldKind::Texts) record.clear(*choice.field);
  }
  for (const DOMElement* dom : XercesHelper::getElements(parent, element.name)) {
    if (const auto* choice = choiceOf(element, dom)) readText(*choice->field, record, dom);
  }
}

}  // namespace

bool Element::isWrapper() const {
  return text == nullptr && list == nullptr && choices.empty() && !children.empty();
}

Element elementOf(const RecordTable& table) {
  Element element;
  placeFields(table, element);
  return element;
}

Element elementOf(const DocumentTable& table) {
  Element root = elementOf(table.record);
  root.name = opc::fromUtf8(table.xml);
  return root;
}

void writeXml(const Element& root, const ConstRecord& record,
              const opc::model::DocumentPointer& document, const std::u16string& namespaceURI) {
  writeXml(root, record, XercesHelper::appendElementNS(document, namespaceURI, root.name),
           namespaceURI);
}

void writeXml(const Element& element, const ConstRecord& record, DOMElement* dom,
              const std::u16string& namespaceURI) {
  for (const Element::Attribute& attribute : element.attributes) {
    XercesHelper::setElementAttribute(dom, attribute.name, valueOf(attribute, record));
  }
  if (element.text != nullptr) XercesHelper::setElementText(dom, record.text(*element.text));
  for (const Element& child : element.children) {
    ChildWriter(child, record, dom, namespaceURI).write();
  }
}

void readXml(const Element& element, const Record& record, const DOMElement* dom) {
  if (element.text != nullptr) readText(*element.text, record, dom);
  for (const Element::Attribute& attribute : element.attributes) {
    std::u16string text;
    const bool isRead =
        attribute.field != nullptr && XercesHelper::getElementAttribute(dom, attribute.name, text);
    if (isRead) readValue(*attribute.field, record, text);
  }
  for (const Element& child : element.children) {
    if (!child.choices.empty()) {
      readChoices(child, record, dom);
    } else if (child.list != nullptr) {
      readList(child, record, dom);
    } else {
      readXml(child, record, XercesHelper::getElement(dom, child.name));
    }
  }
}

namespace {

bool isRepeated(const Element& element) {
  return element.list != nullptr || !element.choices.empty();
}

std::u16string nameOf(const RecordTable& table, const Element& element, const DOMElement* dom) {
  const Field* name = table.find("name");
  const auto found = std::find_if(element.attributes.begin(), element.attributes.end(),
                                  [&](const auto& attribute) { return attribute.field == name; });
  return found == element.attributes.end() ? std::u16string() : attributeOf(dom, found->name);
}

void visitFrom(const FoundElement& found, const std::function<void(const FoundElement&)>& visit) {
  visit(found);
  for (const Element& child : found.element.children) {
    auto elements = XercesHelper::getElements(found.dom, child.name);
    if (!isRepeated(child) && elements.size() > 1) elements.resize(1);
    const bool isRecord = child.list != nullptr && child.list->kind() == FieldKind::Records;
    const RecordTable* table = isRecord ? &child.list->table() : found.table;
    for (const DOMElement* dom : elements) {
      visitFrom({child, dom, table, isRecord ? nameOf(*table, child, dom) : found.name}, visit);
    }
  }
}

}  // namespace

void visitElements(const Element& root, const DOMElement* dom,
                   const std::function<void(const FoundElement&)>& visit) {
  visitFrom({root, dom, nullptr, {}}, visit);
}

std::vector<const DOMElement*> elementsOf(const Element& root, const DOMElement* dom,
                                          const Member& member) {
  std::vector<const DOMElement*> elements;
  visitElements(root, dom, [&](const FoundElement& found) {
    const Element& element = found.element;
    const Field* field = element.list != nullptr ? element.list : element.text;
    if (field != nullptr && field->member == &member) elements.push_back(found.dom);
  });
  return elements;
}

void visitValues(const Element& root, const DOMElement* dom,
                 const std::function<void(const FoundValue&)>& visit) {
  visitElements(root, dom, [&](const FoundElement& found) {
    const Element& element = found.element;
    std::u16string text;
    for (const Element::Attribute& attribute : element.attributes) {
      const bool isThere = attribute.field != nullptr &&
                           XercesHelper::getElementAttribute(found.dom, attribute.name, text);
      if (isThere) visit({found, *attribute.field, text, {}});
    }
    const Element::Choice* choice = choiceOf(element, found.dom);
    const bool isText = element.list != nullptr && element.list->kind() == FieldKind::Texts;
    const Field* field = choice != nullptr ? choice->field : isText ? element.list : element.text;
    if (field == nullptr) return;
    XercesHelper::getElementText(found.dom, text);
    visit({found, *field, text, choice == nullptr ? std::u16string_view() : choice->value});
  });
}

}  // namespace addon::packaging
