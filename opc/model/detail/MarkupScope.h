// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>
#include <xercesc/dom/DOM.hpp>

namespace opc::model::detail {

/// What the elements around a place say about namespaces: which prefix means what, which are
/// ignorable, which elements give up their tags only. Entered and left like the elements; kept here
/// rather than asked of the DOM, whose look-ups walk all the way up.
class MarkupScope {
 public:
  /// Takes over the element's namespace declarations, Ignorable and ProcessContent. Throws
  /// FormatError (RL-13) for an undeclared prefix and an unknown attribute of compatibility.
  void enter(const xercesc::DOMElement& element);
  void leave();

  bool isIgnorable(std::u16string_view namespaceUri) const;
  /// Whether an ignorable element is replaced by its content.
  bool keepsContent(const xercesc::DOMElement& element) const;
  /// The namespaces of a list of prefixes, in order.
  std::vector<std::u16string_view> resolve(const xercesc::DOMNode& attribute) const;

 private:
  using Name = std::pair<std::u16string, std::u16string>;
  struct Level {
    std::vector<std::u16string> prefixes;
    std::vector<std::u16string> ignorable;
    std::vector<Name> content;
  };

  void declare(const xercesc::DOMNode& attribute);
  void readCompatibility(const xercesc::DOMNode& attribute);
  void addContent(const xercesc::DOMNode& attribute);
  std::u16string_view resolvePrefix(std::u16string_view prefix,
                                    const xercesc::DOMNode& attribute) const;

  std::vector<Level> levels_;
  std::map<std::u16string, std::vector<std::u16string_view>, std::less<>> prefixes_;
  std::map<std::u16string, std::size_t, std::less<>> ignorable_;
  std::map<Name, std::size_t> content_;
};

}  // namespace opc::model::detail
