// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace addon::project {

/// Without blanks and line ends at both ends.
std::string_view trimmed(std::string_view text);

/// The lines of a text, without their ends: LF, CR LF, CR and form feed. A byte order mark in
/// front is dropped.
std::vector<std::string_view> linesOf(std::string_view text);

/// Whether a manifest can carry the text: it is UTF-8, and holds no control characters but tabs and
/// line ends, nor the two characters that XML has not either.
bool isManifestText(std::string_view text);

/// Why a manifest cannot carry the text; "" when it can.
std::string manifestTextFault(std::string_view text);

/// Whether it is such a text that stays on its line: fit for a path.
bool isManifestLine(std::string_view text);

/// One line of UTF-8 with a blank for every run of blanks and control characters.
std::string asOneLine(std::string_view text);

bool isDigit(char c);
bool isAsciiBlank(char c);

/// Whether `text` begins with `start`, ASCII letters compared without case.
bool startsWithWord(std::string_view text, std::string_view start);

}  // namespace addon::project
