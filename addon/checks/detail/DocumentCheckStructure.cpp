// SPDX-License-Identifier: MIT
#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "addon/checks/AddonFindings.h"
#include "addon/checks/detail/DocumentCheck.h"
#include "opc/Text.h"
#include "opc/checks/Finding.h"
#include "opc/model/DomText.h"

namespace addon::checks::detail {

using opc::checks::quoted;
using opc::checks::Report;
using opc::model::domLocalName;
using opc::model::domNamespace;
using packaging::Element;
using xercesc::DOMElement;

namespace {

constexpr std::u16string_view kXmlNamespace = u"http://www.w3.org/XML/1998/namespace";

std::string_view orNone(std::string_view text) {
  return text.empty() ? std::string_view("none") : text;
}

class StructureCheck {
 public:
  StructureCheck(const ParsedDocument& document, Report& report)
      : document_(document), report_(report), root_(document.text.root()) {}

  void run() {
    checkNamespace();
    if (!checkName()) return;
    for (const DOMElement* at = root_; at != nullptr;) at = visit(at);
  }

 private:
  void add(FindingId id, const DOMElement* element, const std::string& message) {
    report_.add(id, document_.part, message, document_.text.lineOf(element));
  }

  void checkNamespace() {
    const std::u16string& wanted = document_.schema.namespaceURI;
    if (domNamespace(*root_) == wanted) return;
    const std::string found = opc::toUtf8ForDisplay(domNamespace(*root_));
    add(kWrongRoot, root_,
        "the root element has the namespace " + quoted(orNone(found)) + ", not " + quoted(wanted));
  }

  // The content of another root element is unknown.
  bool checkName() {
    const std::u16string_view wanted = document_.schema.root.name;
    if (domLocalName(*root_) == wanted) return true;
    add(kWrongRoot, root_,
        "the root element is " + quoted(domLocalName(*root_)) + ", not " + quoted(wanted));
    return false;
  }

  // Checks a known element, and returns the next one.
  const DOMElement* visit(const DOMElement* element) {
    // path_ holds its ancestors, the root first, each with its schema.
    while (!path_.empty() && path_.back().element != element->getParentNode()) path_.pop_back();
    const Element* schema =
        path_.empty() ? &document_.schema.root : findChild(*path_.back().schema, element);
    if (schema == nullptr) {
      reportUnknown(element);
      return nextAfter(element);
    }
    checkAttributes(element, *schema);
    checkRequired(element, *schema);
    path_.push_back({element, schema});
    return nextElement(element, root_);
  }

  // Skips the descendants of `element`.
  const DOMElement* nextAfter(const DOMElement* element) const {
    for (const xercesc::DOMNode* node = element; node != root_; node = node->getParentNode()) {
      const auto* at = static_cast<const DOMElement*>(node);
      if (const DOMElement* sibling = at->getNextElementSibling()) return sibling;
    }
    return nullptr;
  }

  // Elements have the namespace of their root, whether or not it is the right one.
  const Element* findChild(const Element& parent, const DOMElement* element) const {
    if (domNamespace(*element) != domNamespace(*root_)) return nullptr;
    const auto found =
        std::find_if(parent.children.begin(), parent.children.end(),
                     [&](const Element& child) { return domLocalName(*element) == child.name; });
    return found == parent.children.end() ? nullptr : &*found;
  }

  void reportUnknown(const DOMElement* element) {
    // There may be millions.
    if (!report_.keeps(kUnknownElement)) return report_.add(kUnknownElement, "", "");
    const bool isForeign = domNamespace(*element) != domNamespace(*root_);
    const std::string found = opc::toUtf8ForDisplay(domNamespace(*element));
    const std::string where = isForeign ? " of the namespace " + quoted(orNone(found)) : "";
    add(kUnknownElement, element,
        "element " + quoted(domLocalName(*element)) + where + " in " +
            quoted(path_.back().schema->name) + ": this element is not allowed there");
  }

  static bool mayStand(const xercesc::DOMNode& attribute, const Element& schema) {
    if (opc::model::isNamespaceDeclaration(attribute)) return true;
    if (domNamespace(attribute) == kXmlNamespace) return true;
    if (!domNamespace(attribute).empty()) return false;
    return std::any_of(schema.attributes.begin(), schema.attributes.end(),
                       [&](const auto& one) { return domLocalName(attribute) == one.name; });
  }

  void checkAttributes(const DOMElement* element, const Element& schema) {
    const xercesc::DOMNamedNodeMap* attributes = element->getAttributes();
    for (XMLSize_t i = 0; i < attributes->getLength(); ++i) {
      const xercesc::DOMNode& attribute = *attributes->item(i);
      if (mayStand(attribute, schema)) continue;
      add(kUnknownElement, element,
          "attribute " + quoted(opc::model::domName(attribute)) + " of " + quoted(schema.name) +
              ": this attribute is not allowed there");
    }
  }

  // By local names, as readers find them.
  void checkRequired(const DOMElement* element, const Element& schema) {
    for (const Element& child : schema.children) {
      if (!child.isRequired) continue;
      if (opc::model::XercesHelper::getElement(element, child.name) != nullptr) continue;
      add(kMissingElement, element,
          "element " + quoted(schema.name) + " has no " + quoted(child.name) + " in it");
    }
  }

  struct Step {
    const DOMElement* element;
    const Element* schema;
  };

  const ParsedDocument& document_;
  Report& report_;
  const DOMElement* root_;
  std::vector<Step> path_;
};

}  // namespace

void checkStructure(const ParsedDocument& document, Report& report) {
  StructureCheck(document, report).run();
}

}  // namespace addon::checks::detail
