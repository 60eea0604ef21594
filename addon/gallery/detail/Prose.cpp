// SPDX-License-Identifier: MIT
#include "addon/gallery/detail/Prose.h"

#include <algorithm>
#include <array>
#include <string>

#include "addon/gallery/detail/PlainAddress.h"
#include "text/Lines.h"
#include "text/Markdown.h"

namespace addon::gallery::detail {

namespace {

constexpr std::array<HtmlName, 6> kHeadings{"h1", "h2", "h3", "h4", "h5", "h6"};
// Blocks and spans that are nested deeper lose their markup.
constexpr std::size_t kDeepest = 40;
// Reading a text may take time proportional to the square of its length: allow for one text of
// 128 KiB, or for many small ones.
constexpr std::uint64_t kMostWork = std::uint64_t{128 << 10} * (128 << 10);

/// "" unless it is a plain address.
std::string targetOf(cmark_node* link) {
  constexpr std::string_view kMail = "mailto:";
  const char* const given = cmark_node_get_url(link);
  std::string_view url = given == nullptr ? "" : given;
  const bool isMail = url.starts_with(kMail);
  if (isMail) url.remove_prefix(kMail.size());
  std::string target = linkOf(url);
  return target.starts_with(kMail) == isMail ? target : std::string();
}

/// Whether it is in a list item that is shown without the margins of a paragraph.
bool isInTightList(cmark_node* paragraph) {
  cmark_node* const item = cmark_node_parent(paragraph);
  return cmark_node_get_type(item) == CMARK_NODE_ITEM &&
         cmark_node_get_list_tight(cmark_node_parent(item)) != 0;
}

}  // namespace

bool Prose::isAffordable(std::string_view text) {
  const std::uint64_t work = std::uint64_t{text.size()} * text.size();
  if (text.size() >= kMostWork || work > kMostWork - work_) return false;
  work_ += work;
  return true;
}

void Prose::write(std::string_view text, std::size_t level) {
  if (text::trimmed(text).empty()) return;
  if (isAffordable(text)) {
    const text::Markdown markdown(text);
    if (markdown.root() != nullptr) {
      level_ = level;
      headings_.clear();
      return writeChildren(markdown.root());
    }
  }
  html_.element("p", {{"class", "lines"}, {"dir", "auto"}}, text);
  html_.newLine();
}

void Prose::writeChildren(cmark_node* parent) {
  ++depth_;
  cmark_node* child = cmark_node_first_child(parent);
  for (; child != nullptr; child = cmark_node_next(child)) {
    if (depth_ > kDeepest) {
      writeTextOf(child);
    } else {
      writeNode(child);
    }
    if (depth_ == 1) html_.newLine();
  }
  --depth_;
}

/// Not recursive, since the nodes may be nested arbitrarily deep.
void Prose::writeTextOf(cmark_node* root) {
  cmark_iter* const nodes = cmark_iter_new(root);
  for (auto event = cmark_iter_next(nodes); event != CMARK_EVENT_DONE;
       event = cmark_iter_next(nodes)) {
    cmark_node* const node = cmark_iter_get_node(nodes);
    if (event == CMARK_EVENT_ENTER) html_.text(text::literalOf(node));
    const bool isBlock =
        (cmark_node_get_type(node) & CMARK_NODE_TYPE_MASK) == CMARK_NODE_TYPE_BLOCK;
    const bool isBreak = cmark_node_get_type(node) == CMARK_NODE_SOFTBREAK ||
                         cmark_node_get_type(node) == CMARK_NODE_LINEBREAK;
    if (isBreak || (isBlock && event == CMARK_EVENT_EXIT)) html_.text("\n");
  }
}

void Prose::writeNode(cmark_node* node) {
  const auto children = [&] { writeChildren(node); };
  switch (cmark_node_get_type(node)) {
    case CMARK_NODE_PARAGRAPH:
      return writeParagraph(node);
    case CMARK_NODE_HEADING:
      return writeHeading(node);
    case CMARK_NODE_LIST:
      return writeList(node);
    case CMARK_NODE_ITEM:
      return html_.element("li", {{"dir", "auto"}}, children);
    case CMARK_NODE_BLOCK_QUOTE:
      return html_.element("blockquote", {{"dir", "auto"}}, children);
    case CMARK_NODE_THEMATIC_BREAK:
      return html_.empty("hr", {});
    case CMARK_NODE_CODE_BLOCK:
      return writeCode(node);
    case CMARK_NODE_HTML_BLOCK:
      return html_.element("p", {{"class", "lines"}, {"dir", "auto"}},
                           text::trimmed(text::literalOf(node)));
    case CMARK_NODE_CODE:
      return html_.element("code", text::literalOf(node));
    case CMARK_NODE_EMPH:
      return html_.element("em", children);
    case CMARK_NODE_STRONG:
      return html_.element("strong", children);
    case CMARK_NODE_LINK:
      return writeLink(node);
    case CMARK_NODE_SOFTBREAK:
      return html_.text("\n");
    case CMARK_NODE_LINEBREAK:
      return html_.empty("br", {});
    default:
      if (text::isOfTable(node, "table")) return writeTable(node);
      html_.text(text::literalOf(node));
      writeChildren(node);
  }
}

void Prose::writeParagraph(cmark_node* node) {
  if (isInTightList(node)) return writeChildren(node);
  html_.element("p", {{"dir", "auto"}}, [&] { writeChildren(node); });
}

void Prose::writeHeading(cmark_node* node) {
  if (cmark_node_first_child(node) == nullptr) return;
  const int given = cmark_node_get_heading_level(node);
  while (!headings_.empty() && headings_.back() >= given) headings_.pop_back();
  headings_.push_back(given);
  const std::size_t level = std::min(level_ + headings_.size() - 1, kHeadings.size());
  html_.element(kHeadings[level - 1], {{"dir", "auto"}}, [&] { writeChildren(node); });
}

void Prose::writeList(cmark_node* node) {
  const auto items = [&] { writeChildren(node); };
  if (cmark_node_get_list_type(node) == CMARK_BULLET_LIST) return html_.element("ul", items);
  const std::string start = std::to_string(cmark_node_get_list_start(node));
  html_.element("ol", {{"start", start}}, items);
}

void Prose::writeCode(cmark_node* node) {
  // Can be focused, so that the keyboard can scroll it.
  html_.element("pre", {{"tabindex", "0"}}, [&] { html_.element("code", text::literalOf(node)); });
}

void Prose::writeTable(cmark_node* node) {
  cmark_node* const head = cmark_node_first_child(node);
  html_.element("table", [&] {
    html_.element("thead", [&] { writeRow(head, "th", {{"scope", "col"}, {"dir", "auto"}}); });
    html_.element("tbody", [&] {
      for (cmark_node* row = cmark_node_next(head); row != nullptr; row = cmark_node_next(row)) {
        writeRow(row, "td", {{"dir", "auto"}});
      }
    });
  });
}

void Prose::writeRow(cmark_node* node, HtmlName cellName, HtmlWriter::Attributes attributes) {
  html_.element("tr", [&] {
    cmark_node* cell = cmark_node_first_child(node);
    for (; cell != nullptr; cell = cmark_node_next(cell)) {
      html_.element(cellName, attributes, [&] { writeChildren(cell); });
    }
  });
}

void Prose::writeLink(cmark_node* node) {
  const std::string target = targetOf(node);
  if (target.empty()) return writeChildren(node);
  html_.element("a", {{"href", target}, {"rel", "noopener nofollow"}},
                [&] { writeChildren(node); });
}

}  // namespace addon::gallery::detail
