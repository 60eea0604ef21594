// SPDX-License-Identifier: MIT
#include "tool/line/Wrapping.h"

#include <algorithm>

namespace tool::line {

namespace {

std::vector<std::string_view> wordsOf(std::string_view line) {
  constexpr std::string_view kBlanks = " \t";
  std::vector<std::string_view> words;
  for (std::size_t at = line.find_first_not_of(kBlanks); at != std::string_view::npos;
       at = line.find_first_not_of(kBlanks, at)) {
    const std::size_t end = std::min(line.find_first_of(kBlanks, at), line.size());
    words.push_back(line.substr(at, end - at));
    at = end;
  }
  return words;
}

}  // namespace

std::vector<std::vector<std::string_view>> paragraphsOf(std::string_view text) {
  std::vector<std::vector<std::string_view>> paragraphs;
  bool isInside = false;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::vector<std::string_view> words = wordsOf(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
    if (!words.empty() && !isInside) paragraphs.emplace_back();
    isInside = !words.empty();
    if (isInside) paragraphs.back().insert(paragraphs.back().end(), words.begin(), words.end());
  }
  return paragraphs;
}

void appendWrapped(const std::vector<std::string_view>& words, std::size_t column,
                   std::size_t indent, std::string& text) {
  bool isFirst = true;
  for (const std::string_view word : words) {
    const std::size_t blank = isFirst ? 0 : 1;
    if (!isFirst && column + blank + word.size() > kHelpWidth) {
      text += '\n';
      text.append(indent, ' ');
      column = indent;
    } else {
      text.append(blank, ' ');
      column += blank;
    }
    text += word;
    column += word.size();
    isFirst = false;
  }
}

std::string wrapped(std::string_view text) {
  std::string result;
  for (const auto& paragraph : paragraphsOf(text)) {
    if (!result.empty()) result += '\n';
    appendWrapped(paragraph, 0, 0, result);
    result += '\n';
  }
  return result;
}

}  // namespace tool::line
