// SPDX-License-Identifier: MIT
#include "addon/gallery/ProseTable.h"

#include <algorithm>

#include "text/Lines.h"

namespace addon::gallery {

namespace {

using text::trimmed;

/// "---", ":-:"
bool isRule(std::string_view cell) {
  if (cell.starts_with(':')) cell.remove_prefix(1);
  if (cell.ends_with(':')) cell.remove_suffix(1);
  return !cell.empty() && cell.find_first_not_of('-') == cell.npos;
}

}  // namespace

std::vector<std::string> tableCellsOf(std::string_view line) {
  std::vector<std::string> cells;
  line = trimmed(line);
  if (line.find('|') == line.npos) return cells;
  if (line.starts_with('|')) line.remove_prefix(1);
  std::string cell;
  for (std::size_t at = 0; at < line.size(); ++at) {
    const bool isEscaped = line.substr(at).starts_with("\\|");
    if (line[at] == '|') {
      cells.emplace_back(trimmed(cell));
      cell.clear();
    } else {
      cell += line[at += isEscaped ? 1 : 0];
    }
  }
  // What follows the last bar is a cell only when there is something.
  if (!trimmed(cell).empty()) cells.emplace_back(trimmed(cell));
  return cells;
}

bool beginsTable(std::span<const std::string_view> lines) {
  if (lines.size() < 2) return false;
  // Most lines end here, before anything is copied.
  if (lines[0].find('|') == std::string_view::npos) return false;
  if (trimmed(lines[1]).find_first_not_of("|:- \t") != std::string_view::npos) return false;
  const std::vector<std::string> rules = tableCellsOf(lines[1]);
  return !rules.empty() && std::all_of(rules.begin(), rules.end(), isRule) &&
         tableCellsOf(lines[0]).size() == rules.size();
}

}  // namespace addon::gallery
