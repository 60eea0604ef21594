// SPDX-License-Identifier: MIT
#include "addon/project/detail/TomlKeys.h"

#include <algorithm>
#include <string>

namespace addon::project::detail {

namespace {

constexpr std::size_t kMaxDots = 15;

/// The position after the character or escape at `at`.
std::size_t afterCharacter(std::string_view text, std::size_t at, char quote) {
  const bool isEscape = quote == '"' && text[at] == '\\' && at + 1 < text.size();
  return at + (isEscape ? 2 : 1);
}

/// The end of a multi-line string that begins at `at`. Up to two quotes may precede the three that
/// end it.
std::size_t afterBlock(std::string_view text, std::size_t at, char quote) {
  const std::string fence(3, quote);
  for (at += fence.size(); at < text.size(); at = afterCharacter(text, at, quote)) {
    if (text.substr(at, fence.size()) != fence) continue;
    const std::size_t end = std::min(text.find_first_not_of(quote, at), text.size());
    return std::min(end, at + fence.size() + 2);
  }
  return text.size();
}

/// The end of a string that begins at `at`, or of its line if it is not closed.
std::size_t afterString(std::string_view text, std::size_t at) {
  const char quote = text[at];
  if (text.substr(at, 3) == std::string(3, quote)) return afterBlock(text, at, quote);
  for (++at; at < text.size() && text[at] != '\n'; at = afterCharacter(text, at, quote)) {
    if (text[at] == quote) return at + 1;
  }
  return std::min(at, text.size());
}

}  // namespace

std::size_t findLongKey(std::string_view text) {
  constexpr std::string_view kEnds = "\n=,[]{}";
  std::size_t dots = 0;
  for (std::size_t at = 0; at < text.size();) {
    const char c = text[at];
    if (c == '"' || c == '\'') {
      at = afterString(text, at);
      continue;
    }
    if (c == '#') {
      at = std::min(text.find('\n', at), text.size());
      continue;
    }
    if (kEnds.find(c) != kEnds.npos) dots = 0;
    if (c == '.' && ++dots > kMaxDots) return at;
    ++at;
  }
  return std::string_view::npos;
}

}  // namespace addon::project::detail
