// SPDX-License-Identifier: MIT
#include "opc/model/detail/MarkupCompatibility.h"

#include <algorithm>

#include "opc/Exception.h"
#include "opc/model/DomText.h"
#include "opc/model/detail/MarkupScope.h"

namespace opc::model::detail {
namespace {

using xercesc::DOMElement;
using xercesc::DOMNode;

FormatError invalidMarkup(const DOMNode& node, const std::string& why) {
  return {"RL-13", "element '" + domName(node) + "': " + why};
}

bool isCompatibility(const DOMNode& node, std::u16string_view localName) {
  return domNamespace(node) == kMarkupCompatibilityNamespace && domLocalName(node) == localName;
}

// Walks over the document without recursion; what it is inside of lies in frames_.
class Processor {
 public:
  Processor(std::u16string_view understood, MarkupConsumer& consumer)
      : understood_(understood), consumer_(consumer) {}

  void run(const DOMElement& root) {
    const DOMNode* next = visitElement(root) ? root.getFirstChild() : nullptr;
    while (!frames_.empty()) {
      if (next == nullptr) {
        next = leave()->getNextSibling();
      } else {
        next = visit(*next) ? next->getFirstChild() : next->getNextSibling();
      }
    }
  }

 private:
  enum class Kind { Kept, Unwrapped, Alternatives };
  struct Frame {
    const DOMElement* element;
    Kind kind;
    const DOMNode* chosen;  // the child of AlternateContent that applies, if any
  };

  // Each visit returns whether the element was entered, so that its children come next.
  bool visit(const DOMNode& node) {
    if (isTextNode(node)) visitText(domText(node.getNodeValue()));
    return isElementNode(node) && visitElement(static_cast<const DOMElement&>(node));
  }

  void visitText(std::u16string_view text) {
    if (frames_.back().kind != Kind::Alternatives) {
      consumer_.characters(text);
    } else if (!trimXmlSpace(text).empty()) {
      throw invalidMarkup(*frames_.back().element, "it holds text");
    }
  }

  bool visitElement(const DOMElement& element) {
    if (!frames_.empty() && frames_.back().kind == Kind::Alternatives) {
      if (&element != frames_.back().chosen) return false;
      scope_.enter(element);
      return enter(element, Kind::Unwrapped, nullptr);
    }
    scope_.enter(element);
    const std::u16string_view space = domNamespace(element);
    if (space == understood_) return enterUnderstood(element);
    if (isCompatibility(element, u"AlternateContent")) {
      checkPlainAttributes(element, {});
      return enter(element, Kind::Alternatives, choose(element));
    }
    return visitForeign(element);
  }

  bool enterUnderstood(const DOMElement& element) {
    requireUnderstood(element);
    consumer_.startElement(element, keptAttributes(element));
    frames_.push_back({&element, Kind::Kept, nullptr});
    return true;
  }

  bool visitForeign(const DOMElement& element) {
    if (!scope_.isIgnorable(domNamespace(element))) {
      throw invalidMarkup(element, "its namespace is neither understood nor ignorable");
    }
    if (scope_.keepsContent(element)) return enter(element, Kind::Unwrapped, nullptr);
    scope_.leave();
    return false;
  }

  bool enter(const DOMElement& element, Kind kind, const DOMNode* chosen) {
    requireUnderstood(element);
    frames_.push_back({&element, kind, chosen});
    return true;
  }

  const DOMNode* leave() {
    const Frame frame = frames_.back();
    frames_.pop_back();
    scope_.leave();
    if (frame.kind == Kind::Kept) consumer_.endElement();
    return frame.element;
  }

  bool isUnderstood(std::u16string_view space) const {
    return space == understood_ || space == kMarkupCompatibilityNamespace;
  }

  void requireUnderstood(const DOMElement& element) const {
    const DOMNode* attribute =
        element.getAttributeNodeNS(kMarkupCompatibilityNamespace.data(), u"MustUnderstand");
    if (attribute == nullptr) return;
    for (const std::u16string_view space : scope_.resolve(*attribute)) {
      if (isUnderstood(space)) continue;
      throw invalidMarkup(
          element, "namespace '" + toUtf8ForDisplay(space) + "' must be understood and is not");
    }
  }

  // What is neither a declaration nor of markup compatibility nor ignorable.
  std::vector<const DOMNode*> keptAttributes(const DOMElement& element) const {
    std::vector<const DOMNode*> kept;
    const xercesc::DOMNamedNodeMap* attributes = element.getAttributes();
    for (XMLSize_t i = 0; i < attributes->getLength(); ++i) {
      const DOMNode& attribute = *attributes->item(i);
      const std::u16string_view space = domNamespace(attribute);
      if (isNamespaceDeclaration(attribute) || space == kMarkupCompatibilityNamespace) continue;
      const bool known = space.empty() || space == understood_ || space == kXmlNamespace;
      if (!known && scope_.isIgnorable(space)) continue;
      if (!known) {
        throw invalidMarkup(element, "the namespace of attribute '" + domName(attribute) +
                                         "' is neither understood nor ignorable");
      }
      kept.push_back(&attribute);
    }
    return kept;
  }

  // For elements of markup compatibility, which take one attribute of their own at most.
  void checkPlainAttributes(const DOMElement& element, std::u16string_view allowed) const {
    for (const DOMNode* attribute : keptAttributes(element)) {
      if (domNamespace(*attribute).empty() && domLocalName(*attribute) == allowed) continue;
      throw invalidMarkup(element, "it does not take attribute '" + domName(*attribute) + "'");
    }
  }

  // The first choice whose requirements are met, else the fallback, else null.
  const DOMNode* choose(const DOMElement& alternatives) {
    const DOMNode* chosen = nullptr;
    bool anyChoice = false;
    bool fallback = false;
    for (const DOMNode* node = alternatives.getFirstChild(); node != nullptr;
         node = node->getNextSibling()) {
      if (!isElementNode(*node)) continue;
      const auto& branch = static_cast<const DOMElement&>(*node);
      const bool isChoice = isCompatibility(branch, u"Choice");
      if (!isChoice && !isCompatibility(branch, u"Fallback")) {
        requireIgnorable(branch);
        continue;
      }
      if (fallback || (!isChoice && !anyChoice)) {
        throw invalidMarkup(branch, "its place is not after a choice and before the fallback");
      }
      anyChoice = true;
      fallback = !isChoice;
      const bool applies = isChoice ? meetsRequirements(branch) : checkFallback(branch);
      if (applies && chosen == nullptr) chosen = node;
    }
    if (!anyChoice) throw invalidMarkup(alternatives, "it holds no choice");
    return chosen;
  }

  void requireIgnorable(const DOMElement& branch) {
    scope_.enter(branch);
    const bool ignorable = scope_.isIgnorable(domNamespace(branch));
    scope_.leave();
    if (!ignorable) throw invalidMarkup(branch, "it is neither a choice nor a fallback");
  }

  bool meetsRequirements(const DOMElement& choice) {
    scope_.enter(choice);
    checkPlainAttributes(choice, u"Requires");
    const DOMNode* attribute = choice.getAttributeNode(u"Requires");
    const std::vector<std::u16string_view> spaces =
        attribute == nullptr ? std::vector<std::u16string_view>() : scope_.resolve(*attribute);
    scope_.leave();
    if (spaces.empty()) throw invalidMarkup(choice, "it does not say what it requires");
    return std::all_of(spaces.begin(), spaces.end(),
                       [this](std::u16string_view space) { return isUnderstood(space); });
  }

  bool checkFallback(const DOMElement& fallback) {
    scope_.enter(fallback);
    checkPlainAttributes(fallback, {});
    scope_.leave();
    return true;
  }

  std::u16string_view understood_;
  MarkupConsumer& consumer_;
  MarkupScope scope_;
  std::vector<Frame> frames_;
};

}  // namespace

void processMarkup(const DOMElement& root, std::u16string_view understoodNamespace,
                   MarkupConsumer& consumer) {
  Processor(understoodNamespace, consumer).run(root);
}

}  // namespace opc::model::detail
