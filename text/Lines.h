// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace text {

// Plain text that people wrote, and its lines.

/// Without blanks and line ends at both ends.
std::string_view trimmed(std::string_view text);

/// Without the slashes at both ends: "a/b" of "/a/b/", and "" of "/".
std::string_view trimSlashes(std::string_view path);

/// The lines of a text, without their ends: LF, CR LF, CR and form feed. A byte order mark in
/// front is dropped.
std::vector<std::string_view> linesOf(std::string_view text);

/// The number of LF in a text.
std::size_t countLineFeeds(std::string_view text);

}  // namespace text
