// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string_view>

#include "addon/gallery/HtmlWriter.h"

namespace addon::gallery {

/// Writes a text at length. Blank lines separate paragraphs; the lines of a paragraph stay lines,
/// unless an editor has filled them, as it shows by their lengths.
///
/// Descriptions often are a README, so what is plainly one of these is shown as such: headings
/// ("## Filters"), lists ("- one", "2. two"), tables, fenced blocks of code, and what ProseSpans.h
/// knows.
/// Everything else, links and HTML too, is text. The headings of the text become headings from
/// `level` on down, never skipping one.
void writeProse(HtmlWriter& html, std::string_view text, std::size_t level);

}  // namespace addon::gallery
