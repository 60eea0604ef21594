// SPDX-License-Identifier: MIT
#include "addon/project/ChangelogGuess.h"

#include <algorithm>
#include <chrono>
#include <optional>

#include "addon/project/PlainText.h"

namespace addon::project {

namespace {

constexpr std::size_t kDateLength = 10;

/// "2026-02-01", but also "2026-13-45"
bool looksLikeDate(std::string_view text) {
  constexpr std::string_view kShape = "dddd-dd-dd";
  return std::equal(text.begin(), text.end(), kShape.begin(), kShape.end(),
                    [](char c, char shape) { return shape == 'd' ? isAsciiDigit(c) : c == shape; });
}

int numberOf(std::string_view digits) {
  int number = 0;
  for (const char digit : digits) number = number * 10 + (digit - '0');
  return number;
}

/// Whether the date is valid. `text` must look like a date.
bool isDay(std::string_view text) {
  const std::chrono::year year(numberOf(text.substr(0, 4)));
  const std::chrono::month month(static_cast<unsigned>(numberOf(text.substr(5, 2))));
  const std::chrono::day day(static_cast<unsigned>(numberOf(text.substr(8, 2))));
  return std::chrono::year_month_day(year, month, day).ok();
}

bool isVersionCharacter(char c) {
  return isAsciiLetterOrDigit(c) || c == '.' || c == '-' || c == '+' || c == '_';
}

std::string dateIn(std::string_view text) {
  bool isMistaken = false;
  for (std::size_t at = 0; at + kDateLength <= text.size(); ++at) {
    const std::string_view date = text.substr(at, kDateLength);
    if (!looksLikeDate(date)) continue;
    if (isDay(date)) return std::string(date);
    isMistaken = true;
  }
  if (isMistaken) return {};
  // Words such as "March 2026", without the punctuation around them.
  const auto isAround = [](char c) {
    return c == '(' || c == ')' || c == '-' || c == ':' || c == ',';
  };
  text = trimmed(text);
  while (!text.empty() && (isAround(text.front()) || isAsciiSpace(text.front()))) {
    text.remove_prefix(1);
  }
  while (!text.empty() && (isAround(text.back()) || isAsciiSpace(text.back()))) {
    text.remove_suffix(1);
  }
  constexpr std::size_t kMaxDateLength = 30;
  const bool isOne =
      text.size() <= kMaxDateLength && std::any_of(text.begin(), text.end(), isAsciiDigit);
  return isOne ? asOneLine(text) : std::string();
}

/// The revision in the text after "## ", if it begins with a version.
std::optional<GuessedRevision> revisionOf(std::string_view heading) {
  std::string_view rest = trimmed(heading);
  const bool isBracketed = rest.starts_with('[');
  if (isBracketed) rest.remove_prefix(1);
  if (startsWithWord(rest, "version ")) rest = trimmed(rest.substr(8));
  if (startsWithWord(rest, "v")) rest.remove_prefix(1);
  const auto* end = std::find_if_not(rest.begin(), rest.end(), isVersionCharacter);
  std::string_view version = rest.substr(0, static_cast<std::size_t>(end - rest.begin()));
  rest.remove_prefix(version.size());
  while (!version.empty() && !isAsciiDigit(version.back()) && version.back() != '+' &&
         (version.back() == '.' || version.back() == '-' || version.back() == '_')) {
    version.remove_suffix(1);
  }
  if (version.empty() || !isAsciiDigit(version.front()) || looksLikeDate(version))
    return std::nullopt;
  if (isBracketed) {
    if (!rest.starts_with(']')) return std::nullopt;
    rest.remove_prefix(1);
    // [1.2](address)
    if (rest.starts_with('(')) rest.remove_prefix(std::min(rest.find(')'), rest.size() - 1) + 1);
  }
  return GuessedRevision{std::string(version), dateIn(rest), {}};
}

/// "[1.2]: address"
bool isLinkDefinition(std::string_view line) {
  return line.starts_with('[') && line.find("]: ") != line.npos;
}

/// Whether the line begins or ends a block of code. "```a``` is code" does not.
bool isFence(std::string_view line) {
  line = trimmed(line);
  if (line.starts_with("~~~")) return true;
  return line.starts_with("```") && line.find('`', line.find_first_not_of('`')) == line.npos;
}

bool isHeading(std::string_view line) {
  return line.starts_with("# ") || line.starts_with("## ");
}

void trimDescription(std::string& text) {
  const std::string_view kept = trimmed(text);
  text = std::string(kept);
}

}  // namespace

std::vector<GuessedRevision> revisionsOf(std::string_view changelog) {
  std::vector<GuessedRevision> revisions;
  bool isInRevision = false;
  bool isFenced = false;
  for (const std::string_view line : linesOf(changelog)) {
    if (isFence(line)) isFenced = !isFenced;
    if (!isFenced && isHeading(line)) {
      auto revision = line.starts_with("## ") ? revisionOf(line.substr(3)) : std::nullopt;
      isInRevision = revision.has_value();
      if (revision) revisions.push_back(std::move(*revision));
      continue;
    }
    if (!isInRevision || (!isFenced && isLinkDefinition(line))) continue;
    revisions.back().description.append(line).append("\n");
  }
  for (GuessedRevision& revision : revisions) trimDescription(revision.description);
  return revisions;
}

}  // namespace addon::project
