// SPDX-License-Identifier: MIT
#pragma once

#include <concepts>
#include <cstdint>
#include <string>
#include <string_view>

#include "addon/gallery/detail/HtmlWriter.h"

namespace addon::gallery::detail {

// Small pieces that several sections share.

/// "1 file", "12,345 files"
std::string counted(std::uint64_t count, std::string_view noun);

/// The part of a path after the last '/'.
std::string_view lastName(std::string_view path);

/// A text of the package within text of the page. Its writing direction does not affect the text
/// around it.
void writeIsolated(HtmlWriter& html, std::string_view text);

/// A path or identifier.
void writeCode(HtmlWriter& html, std::string_view text);

/// The first ten bytes of a date or of a time such as "2026-02-01T10:00:00Z"; "" for other texts.
std::string_view dayOf(std::string_view date);

/// A date, or a time such as "2026-02-01T10:00:00Z", as a date; any other text unchanged.
void writeDate(HtmlWriter& html, std::string_view date);

/// A link that leads to a plain address (PlainAddress.h), with what `content()` writes into it.
template <std::invocable Content>
void writeAnchor(HtmlWriter& html, std::string_view address, const Content& content) {
  html.element("a", {{"href", address}, {"rel", "noopener nofollow"}}, content);
}

/// Something that may be wider than the page, such as a table. It scrolls by itself, and can be
/// focused so that the keyboard can scroll it.
template <std::invocable Content>
void writeWide(HtmlWriter& html, std::string_view label, const Content& content) {
  html.element("div",
               {{"class", "wide"}, {"role", "group"}, {"aria-label", label}, {"tabindex", "0"}},
               content);
}

/// Mail and web addresses as links, everything else as text.
void writeContact(HtmlWriter& html, std::string_view contact);

}  // namespace addon::gallery::detail
