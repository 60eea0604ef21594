// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

#include "opc/Text.h"
#include "text/Lines.h"

namespace addon::project {

using opc::isAsciiBlank;
using opc::isAsciiDigit;
using opc::isAsciiLetterOrDigit;
using text::linesOf;
using text::trimmed;

/// Whether a manifest can carry the text: it is UTF-8, and holds no control characters but tabs and
/// line ends, nor the two characters that XML has not either.
bool isManifestText(std::string_view text);

/// Why a manifest cannot carry the text; "" when it can.
std::string manifestTextFault(std::string_view text);

/// Why XML, and so a package, cannot carry the text; "" when it can. That is less than a manifest
/// refuses: packages of other writers may well hold U+007F to U+009F.
std::string xmlTextFault(std::string_view text);

/// Whether it is such a text that stays on its line: fit for a path.
bool isManifestLine(std::string_view text);

/// One line of UTF-8 with a blank for every run of blanks and control characters.
std::string asOneLine(std::string_view text);

/// Whether `text` begins with `start`, ASCII letters compared without case.
bool startsWithWord(std::string_view text, std::string_view start);

}  // namespace addon::project
