// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tool::line {

/// The maximum width of help.
inline constexpr std::size_t kHelpWidth = 80;

/// The words of each paragraph of a text. Blank lines separate paragraphs.
std::vector<std::vector<std::string_view>> paragraphsOf(std::string_view text);

/// Appends words, with line ends where a line would be wider than kHelpWidth. The text is already
/// at `column`; further lines begin at `indent`. Words are not broken.
void appendWrapped(const std::vector<std::string_view>& words, std::size_t column,
                   std::size_t indent, std::string& text);

/// The paragraphs of a text, wrapped. Each ends with a line end; blank lines separate them.
std::string wrapped(std::string_view text);

}  // namespace tool::line
