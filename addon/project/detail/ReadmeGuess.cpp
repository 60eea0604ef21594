// SPDX-License-Identifier: MIT
#include "addon/project/detail/ReadmeGuess.h"

#include <algorithm>
#include <vector>

#include "addon/project/PlainText.h"
#include "opc/Text.h"
#include "text/Markdown.h"

namespace addon::project::detail {

namespace {

constexpr std::size_t kMaxReadmeSize = 64 << 10;  // bytes looked at
constexpr std::size_t kMaxSummaryLength = 200;
constexpr std::size_t kMaxTitleLength = 100;

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

/// Whether a sentence ends at `at`, rather than an abbreviation such as "e.g." or "J.".
bool endsSentence(std::string_view text, std::size_t at) {
  if (std::string_view(".!?").find(text[at]) == text.npos) return false;
  const std::string_view rest = text.substr(at + 1);
  if (rest.size() < 2 || rest[0] != ' ' || (rest[1] >= 'a' && rest[1] <= 'z')) return false;
  const std::string_view word = text.substr(text.rfind(' ', at) + 1, at - text.rfind(' ', at) - 1);
  return word.size() > 1 && word.find('.') == word.npos;
}

std::string firstSentence(const std::string& text) {
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (endsSentence(text, at)) return text.substr(0, at + 1);
  }
  return text;
}

std::string cut(const std::string& text) {
  if (text.size() <= kMaxSummaryLength) return text;
  const std::size_t word = text.rfind(' ', kMaxSummaryLength);
  const bool hasWords = word != text.npos;
  return std::string(hasWords ? text.substr(0, word) : opc::clipUtf8(text, kMaxSummaryLength)) +
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

/// A paragraph or a heading.
struct Block {
  int level = 0;  ///< of a heading; 0 for a paragraph
  std::vector<std::string> lines{""};
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

/// A paragraph or heading, without images and HTML.
Block toBlock(cmark_node* node) {
  const bool isHeading = cmark_node_get_type(node) == CMARK_NODE_HEADING;
  Block block{.level = isHeading ? cmark_node_get_heading_level(node) : 0};
  visitBelow(node, [&](cmark_node* inner) {
    const cmark_node_type type = cmark_node_get_type(inner);
    if (type == CMARK_NODE_SOFTBREAK || type == CMARK_NODE_LINEBREAK) {
      block.lines.emplace_back();
    } else if (type == CMARK_NODE_TEXT || type == CMARK_NODE_CODE) {
      block.lines.back() += text::literalOf(inner);
    }
    return type != CMARK_NODE_IMAGE;
  });
  return block;
}

/// The level of the heading that a line of HTML opens, or 0.
int openedHeading(std::string_view line) {
  const bool isHeading = startsWithWord(line, "<h") && line.size() > 2 && isAsciiDigit(line[2]);
  return isHeading ? line[2] - '0' : 0;
}

/// The texts of an HTML block, unless it is a comment. A tag at the beginning of a line ends one.
void addHtml(cmark_node* node, std::vector<Block>& blocks) {
  const std::string_view html = trimmed(text::literalOf(node));
  if (html.starts_with("<!") || html.starts_with("<?")) return;
  for (std::string_view line : linesOf(html)) {
    line = trimmed(line);
    if (line.starts_with('<')) blocks.push_back({.level = openedHeading(line)});
    blocks.back().lines.push_back(withoutTags(line));
  }
}

/// All blocks of text, except code and tables.
std::vector<Block> blocksOf(cmark_node* document) {
  std::vector<Block> blocks;
  visitBelow(document, [&](cmark_node* node) {
    switch (cmark_node_get_type(node)) {
      case CMARK_NODE_PARAGRAPH:
      case CMARK_NODE_HEADING:
        blocks.push_back(toBlock(node));
        return false;
      case CMARK_NODE_HTML_BLOCK:
        addHtml(node, blocks);
        return false;
      default:
        return true;
    }
  });
  return blocks;
}

/// The text of a block on one line, without rules and what is left of badges. "" for a directive of
/// reStructuredText, such as ".. image:: a.png".
std::string textOf(const Block& block) {
  std::string text;
  for (const std::string& line : block.lines) {
    if (!hasWord(line)) continue;
    if (text.empty() && trimmed(line).starts_with(".. ")) return {};
    text += line + ' ';
  }
  return asOneLine(text);
}

}  // namespace

ReadmeFacts readmeFacts(std::string_view readme) {
  const text::Markdown markdown(opc::clipUtf8(withoutSettings(readme), kMaxReadmeSize));
  if (markdown.root() == nullptr) return {};
  ReadmeFacts facts;
  std::string heading;
  for (const Block& block : blocksOf(markdown.root())) {
    const std::string text = textOf(block);
    if (text.empty()) continue;
    if (block.level == 0) {
      if (facts.summary.empty()) facts.summary = cut(firstSentence(text));
      continue;
    }
    const bool isFirst = heading.empty() && facts.summary.empty();
    if (facts.title.empty() && (block.level == 1 || isFirst)) facts.title = text;
    if (heading.empty()) heading = text;
  }
  if (facts.summary.empty()) facts.summary = cut(heading);
  if (facts.title.size() > kMaxTitleLength) facts.title.clear();
  return facts;
}

}  // namespace addon::project::detail
