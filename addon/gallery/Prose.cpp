// SPDX-License-Identifier: MIT
#include "addon/gallery/Prose.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "addon/gallery/ProseSpans.h"
#include "addon/gallery/ProseTable.h"
#include "text/Lines.h"

namespace addon::gallery {

using text::linesOf;
using text::trimmed;

namespace {

constexpr std::array<HtmlName, 6> kHeadings{"h1", "h2", "h3", "h4", "h5", "h6"};
constexpr std::size_t kDeepestHeading = kHeadings.size();

struct Heading {
  std::size_t level;
  std::string_view text;
};

/// "## Filters ##"
std::optional<Heading> headingOf(std::string_view line) {
  const std::size_t level = std::min(line.find_first_not_of('#'), line.size());
  if (level == 0 || level > kDeepestHeading || level == line.size()) return std::nullopt;
  if (line[level] != ' ' && line[level] != '\t') return std::nullopt;
  std::string_view text = trimmed(line.substr(level));
  const std::size_t end = text.find_last_not_of('#');
  const bool isClosed = end != std::string_view::npos && end + 1 < text.size() && text[end] == ' ';
  if (isClosed) text = trimmed(text.substr(0, end));
  if (text.empty()) return std::nullopt;
  return Heading{level, text};
}

struct ListItem {
  std::string_view number;  ///< "" in a list without numbers
  std::string_view text;
};

/// "- one", "* one", "1. one", "1) one"
std::optional<ListItem> listItemOf(std::string_view line) {
  line = trimmed(line);
  const std::size_t digits = std::min(line.find_first_not_of("0123456789"), line.size());
  if (digits > 3 || digits + 2 >= line.size() || line[digits + 1] != ' ') return std::nullopt;
  const std::string_view markers = digits == 0 ? "-*+" : ".)";
  if (markers.find(line[digits]) == std::string_view::npos) return std::nullopt;
  return ListItem{line.substr(0, digits), trimmed(line.substr(digits + 2))};
}

/// How many characters, about.
std::size_t lengthOf(std::string_view line) {
  return static_cast<std::size_t>(std::count_if(
      line.begin(), line.end(), [](char c) { return (static_cast<unsigned char>(c) >> 6) != 2; }));
}

bool endsSentence(std::string_view line) {
  line = trimmed(line);
  return !line.empty() && std::string_view(".:;!?").find(line.back()) != std::string_view::npos;
}

/// Whether the lines of a paragraph were filled by an editor, so that their ends mean nothing: each
/// is as long as it could be without getting longer than the longest. In two lines that may be
/// chance, unless a sentence runs on.
bool isFilled(std::span<const std::string_view> lines) {
  constexpr std::size_t kLeastWidth = 56;
  std::size_t width = 0;
  for (const std::string_view line : lines) width = std::max(width, lengthOf(trimmed(line)));
  if (lines.size() < 2 || width < kLeastWidth) return false;
  for (std::size_t i = 0; i + 1 < lines.size(); ++i) {
    const std::string_view next = trimmed(lines[i + 1]);
    const std::size_t word = lengthOf(next.substr(0, next.find(' ')));
    if (lengthOf(trimmed(lines[i])) + 1 + word <= width) return false;
  }
  return lines.size() > 2 || !endsSentence(lines.front());
}

class ProseWriter {
 public:
  ProseWriter(HtmlWriter& html, std::string_view text, std::size_t level)
      : html_(html), lines_(linesOf(text)), level_(level) {}

  void write() {
    while (at_ < lines_.size()) writeBlock();
  }

 private:
  void writeBlock() {
    const std::string_view line = lines_[at_];
    if (trimmed(line).empty()) {
      ++at_;
    } else if (const std::string_view fence = text::fenceOf(line); !fence.empty()) {
      writeCode(fence);
    } else if (const auto heading = headingOf(line)) {
      ++at_;
      writeHeading(*heading);
    } else if (const auto item = listItemOf(line)) {
      writeList(!item->number.empty());
    } else if (isTable()) {
      writeTable();
    } else {
      writeParagraph();
    }
    html_.newLine();
  }

  bool isEndOfParagraph() const {
    const std::string_view line = lines_[at_];
    return trimmed(line).empty() || !text::fenceOf(line).empty() || headingOf(line) ||
           listItemOf(line) || isTable();
  }

  bool isTable() const { return beginsTable(std::span(lines_).subspan(at_)); }

  void writeParagraph() {
    const std::size_t first = at_;
    while (at_ < lines_.size() && !isEndOfParagraph()) ++at_;
    const std::span<const std::string_view> lines(lines_.data() + first, at_ - first);
    std::string text;
    for (const std::string_view line : lines) text.append(text.empty() ? "" : "\n").append(line);
    html_.element("p", {{"class", isFilled(lines) ? "filled" : "lines"}, {"dir", "auto"}},
                  [&] { writeSpans(html_, text); });
  }

  void writeCode(std::string_view fence) {
    std::string text;
    for (++at_; at_ < lines_.size() && trimmed(lines_[at_]) != fence; ++at_) {
      text.append(lines_[at_]).append("\n");
    }
    if (at_ < lines_.size()) ++at_;
    // What is wider than the page is scrolled, with the keyboard too.
    html_.element("pre", {{"tabindex", "0"}}, [&] { html_.element("code", text); });
  }

  void writeTable() {
    html_.element("table", [&] {
      html_.element("thead", [&] { writeRow("th", {{"scope", "col"}, {"dir", "auto"}}); });
      ++at_;
      html_.element("tbody", [&] {
        while (at_ < lines_.size() && lines_[at_].find('|') != std::string_view::npos) {
          writeRow("td", {{"dir", "auto"}});
        }
      });
    });
  }

  void writeRow(HtmlName cellName, HtmlWriter::Attributes attributes) {
    html_.element("tr", [&] {
      for (const std::string& cell : tableCellsOf(lines_[at_])) {
        html_.element(cellName, attributes, [&] { writeSpans(html_, cell); });
      }
    });
    ++at_;
  }

  void writeHeading(const Heading& heading) {
    while (!levels_.empty() && levels_.back() >= heading.level) levels_.pop_back();
    levels_.push_back(heading.level);
    const std::size_t level = std::min(level_ + levels_.size() - 1, kDeepestHeading);
    html_.element(kHeadings[level - 1], {{"dir", "auto"}},
                  [&] { writeSpans(html_, heading.text); });
  }

  void writeList(bool isNumbered) {
    const auto items = [&] {
      while (at_ < lines_.size()) {
        const auto item = listItemOf(lines_[at_]);
        if (!item || item->number.empty() == isNumbered) return;
        ++at_;
        writeItem(*item);
      }
    };
    if (isNumbered) return html_.element("ol", items);
    html_.element("ul", items);
  }

  void writeItem(const ListItem& item) {
    std::string text(item.text);
    while (at_ < lines_.size() && !isEndOfParagraph()) text.append("\n").append(lines_[at_++]);
    const auto content = [&] { writeSpans(html_, text); };
    if (item.number.empty()) return html_.element("li", {{"dir", "auto"}}, content);
    html_.element("li", {{"dir", "auto"}, {"value", item.number}}, content);
  }

  HtmlWriter& html_;
  std::vector<std::string_view> lines_;
  std::size_t level_;  ///< of the highest heading
  std::size_t at_ = 0;
  std::vector<std::size_t> levels_;  ///< of the headings that this place is below
};

}  // namespace

void writeProse(HtmlWriter& html, std::string_view text, std::size_t level) {
  ProseWriter(html, text, level).write();
}

}  // namespace addon::gallery
