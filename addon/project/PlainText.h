// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

#include "opc/Text.h"
#include "text/Lines.h"

namespace addon::project {

using opc::isAsciiDigit;
using opc::isAsciiLetterOrDigit;
using opc::isAsciiSpace;
using text::linesOf;
using text::trimmed;

/// Whether a manifest can contain the text: it is UTF-8, without control characters except tabs and
/// line ends, and without the two characters that XML excludes too.
bool isManifestText(std::string_view text);

/// Why a manifest cannot contain the text; "" if it can.
std::string manifestTextFault(std::string_view text);

/// Why XML, and so a package, cannot contain the text; "" if it can. Unlike in a manifest, U+007F
/// to U+009F are allowed, since packages of other writers may contain them.
std::string xmlTextFault(std::string_view text);

/// Whether a manifest can contain the text and it is a single line, as a path must be.
bool isManifestLine(std::string_view text);

/// Replaces each run of blanks and control characters by one blank, and trims. The text is UTF-8.
std::string asOneLine(std::string_view text);

/// Whether `text` begins with `start`, ignoring ASCII case.
bool startsWithWord(std::string_view text, std::string_view start);

}  // namespace addon::project
