// SPDX-License-Identifier: MIT
#include "opc/model/detail/MarkupScope.h"

#include <algorithm>

#include "opc/Exception.h"
#include "opc/model/DomText.h"
#include "opc/model/FormatConstants.h"

namespace opc::model::detail {
namespace {

using xercesc::DOMNode;

FormatError invalidAttribute(const DOMNode& attribute, const std::string& why) {
  return {"RL-13", "attribute '" + domName(attribute) + "': " + why};
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

}  // namespace

void MarkupScope::enter(const xercesc::DOMElement& element) {
  levels_.emplace_back();
  const xercesc::DOMNamedNodeMap* attributes = element.getAttributes();
  // Declarations first: prefixes may be used in an attribute that stands before them.
  for (XMLSize_t i = 0; i < attributes->getLength(); ++i) {
    if (isNamespaceDeclaration(*attributes->item(i))) declare(*attributes->item(i));
  }
  for (XMLSize_t i = 0; i < attributes->getLength(); ++i) {
    const DOMNode& attribute = *attributes->item(i);
    if (domNamespace(attribute) == kMarkupCompatibilityNamespace) readCompatibility(attribute);
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

bool MarkupScope::keepsContent(const xercesc::DOMElement& element) const {
  if (content_.empty()) return false;
  const std::u16string space(domNamespace(element));
  return content_.contains({space, std::u16string(domLocalName(element))}) ||
         content_.contains({space, u"*"});
}

std::vector<std::u16string_view> MarkupScope::resolve(const DOMNode& attribute) const {
  std::vector<std::u16string_view> spaces;
  for (const std::u16string_view prefix : splitWords(domText(attribute.getNodeValue()))) {
    spaces.push_back(resolvePrefix(prefix, attribute));
  }
  return spaces;
}

void MarkupScope::declare(const DOMNode& attribute) {
  const bool hasPrefix = attribute.getPrefix() != nullptr;
  std::u16string prefix(hasPrefix ? domLocalName(attribute) : u"");
  prefixes_[prefix].push_back(domText(attribute.getNodeValue()));
  levels_.back().prefixes.push_back(std::move(prefix));
}

void MarkupScope::readCompatibility(const DOMNode& attribute) {
  const std::u16string_view name = domLocalName(attribute);
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

void MarkupScope::addContent(const DOMNode& attribute) {
  for (const std::u16string_view word : splitWords(domText(attribute.getNodeValue()))) {
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
                                               const DOMNode& attribute) const {
  if (prefix == u"xml") return kXmlNamespace;  // declared from the start
  const auto found = prefixes_.find(prefix);
  if (prefix.empty() || found == prefixes_.end()) {
    throw invalidAttribute(attribute, "prefix '" + toUtf8ForDisplay(prefix) + "' is not declared");
  }
  return found->second.back();
}

}  // namespace opc::model::detail
