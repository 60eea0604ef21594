// SPDX-License-Identifier: MIT
#include "opc/model/detail/MarkupCompatibility.h"

#include <algorithm>
#include <map>
#include <string>
#include <utility>

#include "opc/Exception.h"
#include "opc/model/DomText.h"
#include "opc/model/FormatConstants.h"

namespace opc::model::detail {
namespace {

FormatError invalidMarkup(const XmlNode& element, const std::string& why) {
  return {"RL-13", "element '" + element.name.shown() + "': " + why};
}

bool isCompatibility(const XmlNode& element, std::u16string_view localName) {
  return element.name.namespaceUri == kMarkupCompatibilityNamespace &&
         element.name.localName == localName;
}

FormatError invalidAttribute(const XmlAttribute& attribute, const std::string& why) {
  return {"RL-13", "attribute '" + attribute.name.shown() + "': " + why};
}

// The words of a list, without the white space between them.
std::vector<std::u16string_view> splitWords(std::u16string_view list) {
  std::vector<std::u16string_view> words;
  for (std::size_t at = 0; at < list.size();) {
    if (isXmlSpace(list[at])) {
      ++at;
      continue;
    }
    const auto end =
        std::find_if(list.begin() + static_cast<std::ptrdiff_t>(at), list.end(), isXmlSpace);
    const auto length = static_cast<std::size_t>(end - list.begin()) - at;
    words.push_back(list.substr(at, length));
    at += length;
  }
  return words;
}

template <typename Map, typename Key>
void countDown(Map& map, const Key& key) {
  const auto found = map.find(key);
  if (--found->second == 0) map.erase(found);
}

/// What the elements around a place say about namespaces: which prefix means what, which are
/// ignorable, which elements give up their tags only. Entered and left like the elements; kept
/// here, since an element does not know what is around it.
class MarkupScope {
 public:
  /// Takes over the element's namespace declarations, Ignorable and ProcessContent. Throws
  /// FormatError (RL-13) for an undeclared prefix and an unknown attribute of compatibility.
  void enter(const XmlNode& element);
  void leave();

  bool isIgnorable(std::u16string_view namespaceUri) const;
  /// Whether an ignorable element is replaced by its content.
  bool keepsContent(const XmlNode& element) const;
  /// The namespaces of a list of prefixes, in order.
  std::vector<std::u16string_view> resolve(const XmlAttribute& attribute) const;

 private:
  using Name = std::pair<std::u16string, std::u16string>;
  struct Level {
    std::vector<std::u16string> prefixes;
    std::vector<std::u16string> ignorable;
    std::vector<Name> content;
  };

  void declare(const XmlAttribute& attribute);
  void readCompatibility(const XmlAttribute& attribute);
  void addContent(const XmlAttribute& attribute);
  std::u16string_view resolvePrefix(std::u16string_view prefix,
                                    const XmlAttribute& attribute) const;

  std::vector<Level> levels_;
  std::map<std::u16string, std::vector<std::u16string_view>, std::less<>> prefixes_;
  std::map<std::u16string, std::size_t, std::less<>> ignorable_;
  std::map<Name, std::size_t> content_;
};

void MarkupScope::enter(const XmlNode& element) {
  levels_.emplace_back();
  // Declarations first: prefixes may be used in an attribute that stands before them.
  for (const XmlAttribute& attribute : element.attributes) {
    if (attribute.isNamespaceDeclaration()) declare(attribute);
  }
  for (const XmlAttribute& attribute : element.attributes) {
    if (attribute.name.namespaceUri == kMarkupCompatibilityNamespace) readCompatibility(attribute);
  }
}

void MarkupScope::leave() {
  const Level& level = levels_.back();
  for (const std::u16string& prefix : level.prefixes) {
    const auto found = prefixes_.find(prefix);
    found->second.pop_back();
    if (found->second.empty()) prefixes_.erase(found);
  }
  for (const std::u16string& space : level.ignorable) countDown(ignorable_, space);
  for (const Name& name : level.content) countDown(content_, name);
  levels_.pop_back();
}

bool MarkupScope::isIgnorable(std::u16string_view namespaceUri) const {
  return ignorable_.find(namespaceUri) != ignorable_.end();
}

bool MarkupScope::keepsContent(const XmlNode& element) const {
  if (content_.empty()) return false;
  const std::u16string space(element.name.namespaceUri);
  return content_.contains({space, std::u16string(element.name.localName)}) ||
         content_.contains({space, u"*"});
}

std::vector<std::u16string_view> MarkupScope::resolve(const XmlAttribute& attribute) const {
  std::vector<std::u16string_view> spaces;
  for (const std::u16string_view prefix : splitWords(attribute.value)) {
    spaces.push_back(resolvePrefix(prefix, attribute));
  }
  return spaces;
}

void MarkupScope::declare(const XmlAttribute& attribute) {
  const bool hasPrefix = attribute.name.qualifiedName != attribute.name.localName;
  std::u16string prefix(hasPrefix ? attribute.name.localName : std::u16string_view());
  prefixes_[prefix].push_back(attribute.value);
  levels_.back().prefixes.push_back(std::move(prefix));
}

void MarkupScope::readCompatibility(const XmlAttribute& attribute) {
  const std::u16string_view name = attribute.name.localName;
  if (name == u"Ignorable") {
    for (const std::u16string_view space : resolve(attribute)) {
      ++ignorable_[std::u16string(space)];
      levels_.back().ignorable.emplace_back(space);
    }
  } else if (name == u"ProcessContent") {
    addContent(attribute);
  } else if (name != u"MustUnderstand" && name != u"PreserveElements" &&
             name != u"PreserveAttributes") {
    throw invalidAttribute(attribute, "markup compatibility has none of that name");
  }
}

void MarkupScope::addContent(const XmlAttribute& attribute) {
  for (const std::u16string_view word : splitWords(attribute.value)) {
    const std::size_t colon = word.find(u':');
    if (colon == std::u16string_view::npos || colon + 1 == word.size()) {
      throw invalidAttribute(attribute, "'" + toUtf8ForDisplay(word) + "' has no prefix");
    }
    const std::u16string_view space = resolvePrefix(word.substr(0, colon), attribute);
    Name name(space, word.substr(colon + 1));
    ++content_[name];
    levels_.back().content.push_back(std::move(name));
  }
}

std::u16string_view MarkupScope::resolvePrefix(std::u16string_view prefix,
                                               const XmlAttribute& attribute) const {
  if (prefix == u"xml") return kXmlNamespace;  // declared from the start
  const auto found = prefixes_.find(prefix);
  if (prefix.empty() || found == prefixes_.end()) {
    throw invalidAttribute(attribute, "prefix '" + toUtf8ForDisplay(prefix) + "' is not declared");
  }
  return found->second.back();
}

}  // namespace

// Walks over the document without recursion; what it is inside of lies in frames_.
class MarkupProcessor::State {
 public:
  State(std::u16string_view understood, MarkupConsumer& consumer)
      : understood_(understood), consumer_(consumer) {}

  void startRoot(const XmlNode& root) { visitElement(root); }

  void takeChild(const XmlNode& child) {
    if (frames_.empty()) return;  // the root is left out
    const XmlNode* next = visit(child) ? child.firstChild : nullptr;
    while (frames_.size() > 1) {
      if (next == nullptr) {
        next = leave()->next;
      } else {
        next = visit(*next) ? next->firstChild : next->next;
      }
    }
  }

 private:
  enum class Kind { Kept, Unwrapped, Alternatives };
  struct Frame {
    const XmlNode* element;
    Kind kind;
    const XmlNode* chosen;  // the child of AlternateContent that applies, if any
  };

  // Each visit returns whether the element was entered, so that its children come next.
  bool visit(const XmlNode& node) {
    if (node.isElement()) return visitElement(node);
    visitText(node.text);
    return false;
  }

  void visitText(std::u16string_view text) {
    if (frames_.back().kind != Kind::Alternatives) {
      consumer_.characters(text);
    } else if (!trimXmlSpace(text).empty()) {
      throw invalidMarkup(*frames_.back().element, "it holds text");
    }
  }

  bool visitElement(const XmlNode& element) {
    if (!frames_.empty() && frames_.back().kind == Kind::Alternatives) {
      if (&element != frames_.back().chosen) return false;
      scope_.enter(element);
      return enter(element, Kind::Unwrapped, nullptr);
    }
    scope_.enter(element);
    const std::u16string_view space = element.name.namespaceUri;
    if (space == understood_) return enterUnderstood(element);
    if (isCompatibility(element, u"AlternateContent")) {
      checkPlainAttributes(element, {});
      return enter(element, Kind::Alternatives, choose(element));
    }
    return visitForeign(element);
  }

  bool enterUnderstood(const XmlNode& element) {
    requireUnderstood(element);
    consumer_.startElement(element, keptAttributes(element));
    frames_.push_back({&element, Kind::Kept, nullptr});
    return true;
  }

  bool visitForeign(const XmlNode& element) {
    if (!scope_.isIgnorable(element.name.namespaceUri)) {
      throw invalidMarkup(element, "its namespace is neither understood nor ignorable");
    }
    if (scope_.keepsContent(element)) return enter(element, Kind::Unwrapped, nullptr);
    scope_.leave();
    return false;
  }

  bool enter(const XmlNode& element, Kind kind, const XmlNode* chosen) {
    requireUnderstood(element);
    frames_.push_back({&element, kind, chosen});
    return true;
  }

  const XmlNode* leave() {
    const Frame frame = frames_.back();
    frames_.pop_back();
    scope_.leave();
    if (frame.kind == Kind::Kept) consumer_.endElement();
    return frame.element;
  }

  bool isUnderstood(std::u16string_view space) const {
    return space == understood_ || space == kMarkupCompatibilityNamespace;
  }

  void requireUnderstood(const XmlNode& element) const {
    const XmlAttribute* attribute =
        element.findAttribute(kMarkupCompatibilityNamespace, u"MustUnderstand");
    if (attribute == nullptr) return;
    for (const std::u16string_view space : scope_.resolve(*attribute)) {
      if (isUnderstood(space)) continue;
      throw invalidMarkup(
          element, "namespace '" + toUtf8ForDisplay(space) + "' must be understood and is not");
    }
  }

  // What is neither a declaration nor of markup compatibility nor ignorable.
  std::vector<const XmlAttribute*> keptAttributes(const XmlNode& element) const {
    std::vector<const XmlAttribute*> kept;
    for (const XmlAttribute& attribute : element.attributes) {
      const std::u16string_view space = attribute.name.namespaceUri;
      if (attribute.isNamespaceDeclaration() || space == kMarkupCompatibilityNamespace) continue;
      const bool known = space.empty() || space == understood_ || space == kXmlNamespace;
      if (!known && scope_.isIgnorable(space)) continue;
      if (!known) {
        throw invalidMarkup(element, "the namespace of attribute '" + attribute.name.shown() +
                                         "' is neither understood nor ignorable");
      }
      kept.push_back(&attribute);
    }
    return kept;
  }

  // For elements of markup compatibility, which take one attribute of their own at most.
  void checkPlainAttributes(const XmlNode& element, std::u16string_view allowed) const {
    for (const XmlAttribute* attribute : keptAttributes(element)) {
      const XmlName& name = attribute->name;
      if (name.namespaceUri.empty() && name.localName == allowed) continue;
      throw invalidMarkup(element, "it does not take attribute '" + name.shown() + "'");
    }
  }

  // The first choice whose requirements are met, else the fallback, else null.
  const XmlNode* choose(const XmlNode& alternatives) {
    const XmlNode* chosen = nullptr;
    bool anyChoice = false;
    bool fallback = false;
    for (const XmlNode* node = alternatives.firstChild; node != nullptr; node = node->next) {
      if (!node->isElement()) continue;
      const XmlNode& branch = *node;
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

  void requireIgnorable(const XmlNode& branch) {
    scope_.enter(branch);
    const bool ignorable = scope_.isIgnorable(branch.name.namespaceUri);
    scope_.leave();
    if (!ignorable) throw invalidMarkup(branch, "it is neither a choice nor a fallback");
  }

  bool meetsRequirements(const XmlNode& choice) {
    scope_.enter(choice);
    checkPlainAttributes(choice, u"Requires");
    const XmlAttribute* attribute = choice.findAttribute(u"Requires");
    const std::vector<std::u16string_view> spaces =
        attribute == nullptr ? std::vector<std::u16string_view>() : scope_.resolve(*attribute);
    scope_.leave();
    if (spaces.empty()) throw invalidMarkup(choice, "it does not say what it requires");
    return std::all_of(spaces.begin(), spaces.end(),
                       [this](std::u16string_view space) { return isUnderstood(space); });
  }

  bool checkFallback(const XmlNode& fallback) {
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

MarkupProcessor::MarkupProcessor(std::u16string_view understoodNamespace, MarkupConsumer& consumer)
    : state_(std::make_unique<State>(understoodNamespace, consumer)) {}

MarkupProcessor::~MarkupProcessor() = default;

void MarkupProcessor::startRoot(const XmlNode& root) {
  state_->startRoot(root);
}

void MarkupProcessor::takeChild(const XmlNode& child) {
  state_->takeChild(child);
}

}  // namespace opc::model::detail
