// SPDX-License-Identifier: MIT
#include "addon/project/ReadmeGuess.h"

#include <algorithm>
#include <vector>

#include "addon/project/PlainText.h"

namespace addon::project {

namespace {

constexpr std::size_t kLongestLine = 4096;  // bytes looked at
constexpr std::size_t kLongestSummary = 200;

bool hasWord(std::string_view text) {
  return std::any_of(text.begin(), text.end(), [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return isAsciiDigit(c) || (byte | 0x20u) - 'a' < 26u || byte >= 0x80u;
  });
}

/// For each opening bracket where it is closed; npos for everything else.
std::vector<std::size_t> closings(std::string_view text, char open, char close) {
  std::vector<std::size_t> found(text.size(), text.npos);
  std::vector<std::size_t> opened;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == open) opened.push_back(at);
    if (text[at] != close || opened.empty()) continue;
    found[opened.back()] = at;
    opened.pop_back();
  }
  return found;
}

/// How much of `text` fits into `most` bytes, in whole characters.
std::string_view begunBy(std::string_view text, std::size_t most) {
  if (text.size() <= most) return text;
  while (most > 0 && (text[most] & 0xC0) == 0x80) --most;
  return text.substr(0, most);
}

/// The text without Markdown's links: "[text](target)" leaves its text, "![text](target)" nothing.
/// A picture in a link leaves nothing either.
std::string withoutLinks(std::string_view text) {
  const std::vector<std::size_t> squares = closings(text, '[', ']');
  const std::vector<std::size_t> rounds = closings(text, '(', ')');
  std::string result;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const bool isPicture = text.substr(at, 2) == "![";
    const std::size_t open = at + (isPicture ? 1 : 0);
    const std::size_t close = squares[open];
    const std::size_t target = close < text.size() ? close + 1 : text.npos;
    const std::size_t end =
        target < text.size() ? std::min(rounds[target], squares[target]) : text.npos;
    if (end == text.npos) {
      result += text[at];
      continue;
    }
    const std::string_view label = text.substr(open + 1, close - open - 1);
    if (!isPicture && !label.starts_with("![")) result.append(label);
    at = end;
  }
  return result;
}

/// A '<' that opens no tag stays.
std::string withoutTags(std::string_view text) {
  std::string result;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char next = at + 1 < text.size() ? text[at + 1] : ' ';
    const bool mayOpen = text[at] == '<' && (next == '/' || next == '!' || hasWord({&next, 1}));
    const std::size_t close = mayOpen ? text.find('>', at) : text.npos;
    if (!mayOpen) {
      result += text[at];
    } else if (close == text.npos) {
      break;
    } else {
      at = close;
    }
  }
  return result;
}

/// Without backticks and stars, and without the marks of a quotation, a list or a heading.
std::string withoutMarks(std::string_view text) {
  text = trimmed(text);
  while (text.starts_with('#') || text.starts_with('>')) text = trimmed(text.substr(1));
  if (text.starts_with("- ") || text.starts_with("+ ") || text.starts_with("* "))
    text.remove_prefix(2);
  while (text.ends_with('#')) text = trimmed(text.substr(0, text.size() - 1));
  std::string result;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const bool isUnderline = text.substr(at).starts_with("__");
    if (isUnderline) ++at;
    if (!isUnderline && text[at] != '`' && text[at] != '*') result += text[at];
  }
  return result;
}

bool isRule(std::string_view line) {
  return line.size() >= 3 && line.find_first_not_of("=-*_~^ ") == line.npos;
}

/// Lines that say something about others: reStructuredText's directives, Markdown's link targets.
bool isDirective(std::string_view line) {
  return line.starts_with(".. ") || (line.starts_with('[') && line.find("]: ") != line.npos);
}

std::string cut(const std::string& text) {
  if (text.size() <= kLongestSummary) return text;
  const std::size_t sentence = text.find(". ");
  if (sentence < kLongestSummary) return text.substr(0, sentence + 1);
  const std::size_t word = text.rfind(' ', kLongestSummary);
  const bool hasWords = word != text.npos;
  return std::string(hasWords ? text.substr(0, word) : begunBy(text, kLongestSummary)) + " ...";
}

/// Passes over fenced code, comments and the block of settings that some tools put in front.
class TextLines {
 public:
  explicit TextLines(std::string_view text) : lines_(linesOf(text)) { skipSettings(); }

  /// Returns false at the end. The line is trimmed.
  bool next(std::string_view& line) {
    while (at_ < lines_.size()) {
      line = trimmed(begunBy(lines_[at_++], kLongestLine));
      if (isInside(line)) continue;
      return true;
    }
    return false;
  }
  /// The line after the one that next() gave.
  std::string_view following() const { return at_ < lines_.size() ? trimmed(lines_[at_]) : ""; }

 private:
  void skipSettings() {
    if (lines_.empty() || trimmed(lines_[0]) != "---") return;
    const auto end = std::find(lines_.begin() + 1, lines_.end(), "---");
    if (end != lines_.end()) at_ = static_cast<std::size_t>(end - lines_.begin()) + 1;
  }

  bool isInside(std::string_view line) {
    if (isCommented_) {
      isCommented_ = line.find("-->") == line.npos;
      return true;
    }
    if (!fenceOf(line).empty()) {
      isFenced_ = !isFenced_;
      return true;
    }
    if (isFenced_) return true;
    isCommented_ = line.starts_with("<!--") && line.find("-->") == line.npos;
    return isCommented_;
  }

  std::vector<std::string_view> lines_;
  std::size_t at_ = 0;
  bool isFenced_ = false;
  bool isCommented_ = false;
};

}  // namespace

std::string summaryOf(std::string_view readme) {
  TextLines lines(readme);
  std::string heading;
  std::string_view line;
  while (lines.next(line)) {
    if (isRule(line) || isDirective(line)) continue;
    const std::string text = asOneLine(withoutMarks(withoutTags(withoutLinks(line))));
    if (!hasWord(text)) continue;
    const std::string_view below = lines.following();
    const bool isUnderlined = isRule(below) && (below[0] == '=' || below[0] == '-');
    if (!line.starts_with('#') && !startsWithWord(line, "<h") && !isUnderlined) return cut(text);
    if (heading.empty()) heading = text;
  }
  return cut(heading);
}

}  // namespace addon::project
