// SPDX-License-Identifier: MIT
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace addon::gallery {

/// The cells of a row of a table as README files have them, "| a | b |", where the bars at the ends
/// may be missing and "\|" is a bar in a cell. A line without a bar has none.
std::vector<std::string> tableCellsOf(std::string_view line);

/// Whether a table begins with these lines: a row, and below it "|---|:-:|" with as many cells.
bool beginsTable(std::span<const std::string_view> lines);

}  // namespace addon::gallery
