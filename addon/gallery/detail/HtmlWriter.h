// SPDX-License-Identifier: MIT
#pragma once

#include <concepts>
#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>

#include "opc/Text.h"

namespace addon::gallery::detail {

/// The name of an element or attribute. It can only be a literal, so that no text of a package can
/// become markup.
class HtmlName {
 public:
  // NOLINTNEXTLINE(google-explicit-constructor): a literal is what it stands for.
  consteval HtmlName(const char* literal) : name_(literal) {
    for (const char c : name_) {
      const bool isOfName = opc::isAsciiLetterOrDigit(c) || c == '-' || c == ':';
      if (!isOfName) throw "not a name of an element or attribute";
    }
    if (name_.empty()) throw "an element or attribute has a name";
  }
  constexpr std::string_view text() const { return name_; }

 private:
  std::string_view name_;
};

/// An attribute, its value not yet escaped.
struct HtmlAttribute {
  HtmlName name;
  std::string_view value = {};
};

/// Writes an HTML page piece by piece. All text is shown literally: it is escaped,
/// and what HTML cannot represent (control characters, noncharacters, bytes that are not UTF-8)
/// becomes U+FFFD. Line ends become '\n'. Elements are closed by the call that opened them.
class HtmlWriter {
 public:
  using Sink = std::function<void(std::string_view)>;
  using Attributes = std::initializer_list<HtmlAttribute>;

  /// `sink` receives the page in pieces; exceptions that it throws are passed on.
  explicit HtmlWriter(Sink sink);

  /// The first line of a page.
  void doctype();
  /// An element with what `content()` writes into it.
  template <std::invocable Content>
  void element(HtmlName name, Attributes attributes, const Content& content) {
    startTag(name, attributes);
    content();
    endTag(name);
  }
  template <std::invocable Content>
  void element(HtmlName name, const Content& content) {
    element(name, {}, content);
  }
  /// An element that holds that text.
  void element(HtmlName name, Attributes attributes, std::string_view content);
  void element(HtmlName name, std::string_view content);
  /// An element without content and end tag: meta, img, br.
  void empty(HtmlName name, Attributes attributes);
  void text(std::string_view content);
  /// A style or script element. What it holds is not escaped and must come from the source code.
  /// Throws InvalidArgument if it would end the element.
  void style(std::string_view sheet);
  void script(std::string_view code);
  /// A line end between elements, to make the source readable.
  void newLine();
  /// Passes everything on to the sink. Must be called at the end of the page.
  void flush();

 private:
  void startTag(HtmlName name, Attributes attributes);
  void endTag(HtmlName name);
  void raw(HtmlName name, std::string_view content);
  void append(std::string_view markup);
  void appendEscaped(std::string_view content);

  Sink sink_;
  std::string buffer_;
};

/// How a policy of the page names a style or script element that holds that.
std::string policyHash(std::string_view content);

}  // namespace addon::gallery::detail
