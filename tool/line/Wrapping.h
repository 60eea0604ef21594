// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tool::line {

/// How wide help is at most.
inline constexpr std::size_t kHelpWidth = 80;

/// The paragraphs of a text, each as its words; blank lines stand between paragraphs.
std::vector<std::vector<std::string_view>> paragraphsOf(std::string_view text);

/// Appends words, with line ends where a line would be wider than kHelpWidth. `column` is where the
/// text already stands; further lines begin at `indent`. A word is never broken.
void appendWrapped(const std::vector<std::string_view>& words, std::size_t column,
                   std::size_t indent, std::string& text);

/// The paragraphs of a text, wrapped, each ended by a line end, a blank line between two.
std::string wrapped(std::string_view text);

}  // namespace tool::line
