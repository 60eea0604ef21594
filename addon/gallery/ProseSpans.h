// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

#include "addon/gallery/HtmlWriter.h"

namespace addon::gallery {

/// Writes a text in which `code`, **strong** and *emphasised* words may be set off. Signs that set
/// nothing off, as in "5 * 3" or "*.csv", are text.
void writeSpans(HtmlWriter& html, std::string_view text);

}  // namespace addon::gallery
