// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "addon/gallery/HtmlWriter.h"

namespace addon::gallery {

// Small things that several sections are made of.

/// "1 file", "12,345 files"
std::string counted(std::uint64_t count, std::string_view noun);

/// The part of a path after the last '/'.
std::string_view lastName(std::string_view path);

/// A text of the package among words of the page: whatever its direction is, it turns nothing that
/// stands beside it.
void writeIsolated(HtmlWriter& html, std::string_view text);

/// A path or identifier.
void writeCode(HtmlWriter& html, std::string_view text);

/// A day or a point in time of the form "2026-02-01T10:00:00Z" as the day; any other text as it is.
void writeDate(HtmlWriter& html, std::string_view date);

/// "mailto:" and web addresses as links, all else as text.
void writeContact(HtmlWriter& html, std::string_view contact);

}  // namespace addon::gallery
