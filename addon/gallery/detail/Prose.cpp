// SPDX-License-Identifier: MIT
#include "addon/gallery/detail/Prose.h"

#include <cmark-gfm-core-extensions.h>

#include <algorithm>
#include <array>
#include <string>

#include "addon/gallery/detail/Pieces.h"
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
constexpr std::uint64_t kMaxWork = std::uint64_t{128 << 10} * (128 << 10);

std::string_view urlOf(cmark_node* linkOrImage) {
  const char* const url = cmark_node_get_url(linkOrImage);
  return url == nullptr ? std::string_view() : url;
}

/// "" unless it is a plain address.
std::string targetOf(std::string_view url) {
  constexpr std::string_view kMail = "mailto:";
  const bool isMail = url.starts_with(kMail);
  if (isMail) url.remove_prefix(kMail.size());
  std::string target = linkOf(url);
  return target.starts_with(kMail) == isMail ? target : std::string();
}

/// The text in a node, without HTML. Not recursive, since the nodes may be nested arbitrarily deep.
std::string textOf(cmark_node* root) {
  std::string text;
  cmark_iter* const nodes = cmark_iter_new(root);
  for (auto event = cmark_iter_next(nodes); event != CMARK_EVENT_DONE;
       event = cmark_iter_next(nodes)) {
    cmark_node* const node = cmark_iter_get_node(nodes);
    const cmark_node_type type = cmark_node_get_type(node);
    const bool isHtml = type == CMARK_NODE_HTML_BLOCK || type == CMARK_NODE_HTML_INLINE;
    if (event == CMARK_EVENT_ENTER && !isHtml) text += text::literalOf(node);
    const bool isBlock = (type & CMARK_NODE_TYPE_MASK) == CMARK_NODE_TYPE_BLOCK;
    const bool isBreak = type == CMARK_NODE_SOFTBREAK || type == CMARK_NODE_LINEBREAK;
    if (isBreak || (isBlock && event == CMARK_EVENT_EXIT)) text += '\n';
  }
  return text;
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
  if (text.size() >= kMaxWork || work > kMaxWork - work_) return false;
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
      html_.text(textOf(child));
    } else {
      writeNode(child);
    }
    if (depth_ == 1) html_.newLine();
  }
  --depth_;
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
      return writeItem(node);
    case CMARK_NODE_BLOCK_QUOTE:
      return html_.element("blockquote", {{"dir", "auto"}}, children);
    case CMARK_NODE_THEMATIC_BREAK:
      return html_.empty("hr", {});
    case CMARK_NODE_CODE_BLOCK:
      return writeCode(node);
    case CMARK_NODE_HTML_BLOCK:
    case CMARK_NODE_HTML_INLINE:
      return;
    case CMARK_NODE_CODE:
      return html_.element("code", text::literalOf(node));
    case CMARK_NODE_EMPH:
      return html_.element("em", children);
    case CMARK_NODE_STRONG:
      return html_.element("strong", children);
    case CMARK_NODE_LINK:
      return writeLink(node);
    case CMARK_NODE_IMAGE:
      return writeImage(node);
    case CMARK_NODE_SOFTBREAK:
      return html_.text("\n");
    case CMARK_NODE_LINEBREAK:
      return html_.empty("br", {});
    default:
      if (text::isOfType(node, "table")) return writeTable(node);
      if (text::isOfType(node, "strikethrough")) return html_.element("del", children);
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

void Prose::writeItem(cmark_node* node) {
  const auto children = [&] { writeChildren(node); };
  if (!text::isOfType(node, "tasklist")) return html_.element("li", {{"dir", "auto"}}, children);
  const bool isDone = cmark_gfm_extensions_get_tasklist_item_checked(node);
  html_.element("li", {{"class", "task"}, {"dir", "auto"}}, [&] {
    html_.element("span",
                  {{"class", isDone ? "box done" : "box"},
                   {"role", "img"},
                   {"aria-label", isDone ? "Done" : "Open"}},
                  "");
    html_.text(" ");
    children();
  });
}

void Prose::writeTable(cmark_node* node) {
  cmark_node* const head = cmark_node_first_child(node);
  const std::string_view alignments(
      reinterpret_cast<const char*>(cmark_gfm_extensions_get_table_alignments(node)),
      cmark_gfm_extensions_get_table_columns(node));
  writeWide(html_, "Table", [&] {
    html_.element("table", [&] {
      html_.element("thead", [&] { writeRow(head, alignments, true); });
      html_.element("tbody", [&] {
        for (cmark_node* row = cmark_node_next(head); row != nullptr; row = cmark_node_next(row)) {
          writeRow(row, alignments, false);
        }
      });
    });
  });
}

void Prose::writeRow(cmark_node* node, std::string_view alignments, bool isHead) {
  html_.element("tr", [&] {
    std::size_t column = 0;
    for (cmark_node* cell = cmark_node_first_child(node); cell != nullptr;
         cell = cmark_node_next(cell)) {
      const auto content = [&] { writeChildren(cell); };
      const char given = column < alignments.size() ? alignments[column] : '\0';
      const std::string_view alignment = given == 'r' ? "end" : given == 'c' ? "center" : "start";
      ++column;
      if (isHead) {
        html_.element("th", {{"scope", "col"}, {"class", alignment}, {"dir", "auto"}}, content);
      } else {
        html_.element("td", {{"class", alignment}, {"dir", "auto"}}, content);
      }
    }
  });
}

void Prose::writeLink(cmark_node* node) {
  const std::string target = targetOf(urlOf(node));
  if (target.empty()) return writeChildren(node);
  isInLink_ = true;
  writeAnchor(html_, target, [&] { writeChildren(node); });
  isInLink_ = false;
}

void Prose::writeImage(cmark_node* node) {
  const std::string_view url = urlOf(node);
  std::string description(text::trimmed(textOf(node)));
  const PageImage image = images_.file(filePathOf(url));
  if (!image.address.empty()) {
    return html_.empty("img", {{"src", image.address}, {"alt", description}});
  }
  const std::string target = targetOf(url);
  if (description.empty()) description = target;
  if (!target.empty() && !isInLink_) {
    return writeAnchor(html_, target, [&] { html_.text(description); });
  }
  const bool hasReason = !isInLink_ && !image.absence.empty() && !description.empty();
  if (!hasReason) return html_.text(description);
  html_.element("span", {{"title", image.absence}}, description);
}

}  // namespace addon::gallery::detail
