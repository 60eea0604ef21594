// SPDX-License-Identifier: MIT
#include "addon/project/detail/ReadmeGuess.h"

#include <algorithm>
#include <vector>

#include "addon/project/PlainText.h"
#include "opc/Text.h"
#include "text/Markdown.h"

namespace addon::project::detail {

namespace {

constexpr std::size_t kLongestReadme = 64 << 10;  // bytes looked at
constexpr std::size_t kLongestSummary = 200;

bool hasWord(std::string_view text) {
  return std::any_of(text.begin(), text.end(), [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return isAsciiDigit(c) || (byte | 0x20u) - 'a' < 26u || byte >= 0x80u;
  });
}

/// Removes tags. A '<' that does not open a tag is kept.
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

std::string cut(const std::string& text) {
  if (text.size() <= kLongestSummary) return text;
  const std::size_t sentence = text.find(". ");
  if (sentence < kLongestSummary) return text.substr(0, sentence + 1);
  const std::size_t word = text.rfind(' ', kLongestSummary);
  const bool hasWords = word != text.npos;
  return std::string(hasWords ? text.substr(0, word) : opc::clipUtf8(text, kLongestSummary)) +
         " ...";
}

/// Removes the block of settings that some tools put first.
std::string_view withoutSettings(std::string_view text) {
  const std::vector<std::string_view> lines = linesOf(text);
  if (lines.empty() || trimmed(lines[0]) != "---") return text;
  const auto end = std::find(lines.begin() + 1, lines.end(), "---");
  if (end == lines.end()) return text;
  return text.substr(static_cast<std::size_t>(end->data() + end->size() - text.data()));
}

struct Line {
  std::string text;
  bool isHeading;
};

/// Calls `visit` with each node below `root`. It returns whether to descend into the node.
template <typename Visit>
void visitBelow(cmark_node* root, const Visit& visit) {
  cmark_iter* const nodes = cmark_iter_new(root);
  for (auto event = cmark_iter_next(nodes); event != CMARK_EVENT_DONE;
       event = cmark_iter_next(nodes)) {
    cmark_node* const node = cmark_iter_get_node(nodes);
    if (event != CMARK_EVENT_ENTER || node == root || visit(node)) continue;
    cmark_iter_reset(nodes, node, CMARK_EVENT_EXIT);
  }
}

/// The lines of a paragraph or heading, without images and HTML.
void addLines(cmark_node* block, std::vector<Line>& lines) {
  const bool isHeading = cmark_node_get_type(block) == CMARK_NODE_HEADING;
  lines.push_back({"", isHeading});
  visitBelow(block, [&](cmark_node* node) {
    const cmark_node_type type = cmark_node_get_type(node);
    if (type == CMARK_NODE_SOFTBREAK || type == CMARK_NODE_LINEBREAK) {
      lines.push_back({"", isHeading});
    } else if (type == CMARK_NODE_TEXT || type == CMARK_NODE_CODE) {
      lines.back().text += text::literalOf(node);
    }
    return type != CMARK_NODE_IMAGE;
  });
}

/// The text lines of an HTML block, unless it is a comment.
void addHtmlLines(cmark_node* block, std::vector<Line>& lines) {
  const std::string_view html = trimmed(text::literalOf(block));
  if (html.starts_with("<!") || html.starts_with("<?")) return;
  for (const std::string_view line : linesOf(html)) {
    lines.push_back({withoutTags(line), startsWithWord(trimmed(line), "<h")});
  }
}

/// All lines of text, except those of code and tables.
std::vector<Line> textLinesOf(cmark_node* document) {
  std::vector<Line> lines;
  visitBelow(document, [&](cmark_node* node) {
    switch (cmark_node_get_type(node)) {
      case CMARK_NODE_PARAGRAPH:
      case CMARK_NODE_HEADING:
        addLines(node, lines);
        return false;
      case CMARK_NODE_HTML_BLOCK:
        addHtmlLines(node, lines);
        return false;
      default:
        return true;
    }
  });
  return lines;
}

/// A directive of reStructuredText, such as ".. image:: a.png".
bool isDirective(std::string_view line) {
  return line.starts_with(".. ");
}

}  // namespace

std::string summaryOf(std::string_view readme) {
  const text::Markdown markdown(opc::clipUtf8(withoutSettings(readme), kLongestReadme));
  if (markdown.root() == nullptr) return {};
  std::string heading;
  for (const Line& line : textLinesOf(markdown.root())) {
    const std::string text = asOneLine(line.text);
    if (isDirective(text) || !hasWord(text)) continue;
    if (!line.isHeading) return cut(text);
    if (heading.empty()) heading = text;
  }
  return cut(heading);
}

}  // namespace addon::project::detail
