// SPDX-License-Identifier: MIT
#pragma once

#include <cmark-gfm.h>

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "addon/gallery/Page.h"
#include "addon/gallery/detail/HtmlWriter.h"

namespace addon::gallery::detail {

/// Writes the long texts of a package, which are CommonMark with tables, strikethrough, task lists
/// and autolinks.
///
/// HTML is left out. A link becomes one only if its target is a plain address (PlainAddress.h).
/// Images of the package are shown, any other as its description, with a link to it. Time and
/// memory are bounded: a text that is too long, alone or together with the texts before it, is
/// shown as plain text.
class Prose {
 public:
  /// Both must outlive this object.
  Prose(HtmlWriter& html, PageImages& images) : html_(html), images_(images) {}

  /// The headings of the text start at `level` and skip no level.
  void write(std::string_view text, std::size_t level);

 private:
  bool isAffordable(std::string_view text);
  void writeChildren(cmark_node* parent);
  void writeNode(cmark_node* node);
  void writeParagraph(cmark_node* node);
  void writeHeading(cmark_node* node);
  void writeList(cmark_node* node);
  void writeItem(cmark_node* node);
  void writeCode(cmark_node* node);
  void writeTable(cmark_node* node);
  void writeRow(cmark_node* node, std::string_view alignments, bool isHead);
  void writeLink(cmark_node* node);
  void writeImage(cmark_node* node);

  HtmlWriter& html_;
  PageImages& images_;
  std::uint64_t work_ = 0;
  std::size_t level_ = 1;      ///< of the highest heading
  std::vector<int> headings_;  ///< the levels of the headings that enclose this place
  std::size_t depth_ = 0;      ///< how many nodes enclose this place
  bool isInLink_ = false;
};

}  // namespace addon::gallery::detail
