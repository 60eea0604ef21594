// SPDX-License-Identifier: MIT
#pragma once

#include <cmark-gfm.h>

#include <cstddef>
#include <limits>
#include <memory_resource>
#include <string_view>

namespace text {

/// The memory of a tree of nodes.
class MarkdownMemory {
 public:
  explicit MarkdownMemory(std::size_t limit) : left_(limit) {}

  struct LimitExceeded {};
  /// A block that lives as long as this object. Throws LimitExceeded or std::bad_alloc.
  void* allocate(std::size_t size);
  void removeLimit() { left_ = std::numeric_limits<std::size_t>::max(); }

 private:
  std::pmr::monotonic_buffer_resource blocks_;
  std::size_t left_;
};

/// While it lives, whatever cmark allocates in this thread is taken from `memory`.
class MarkdownMemoryUse {
 public:
  explicit MarkdownMemoryUse(MarkdownMemory& memory);
  ~MarkdownMemoryUse();
  MarkdownMemoryUse(const MarkdownMemoryUse&) = delete;
  MarkdownMemoryUse& operator=(const MarkdownMemoryUse&) = delete;

 private:
  MarkdownMemory* previous_;
};

/// A text in CommonMark with tables, strikethrough, task lists and autolinks, as a tree of cmark
/// nodes.
///
/// A hostile text can take time that grows with the square of its length, so callers limit the
/// length. A text that would take too much memory, or nests too deep, is not read at all.
class Markdown {
 public:
  /// Throws std::bad_alloc. Objects of one thread must be destroyed in reverse order.
  explicit Markdown(std::string_view text);

  /// The document, which belongs to this object. Null if the text was not read.
  cmark_node* root() const { return root_; }

 private:
  MarkdownMemory memory_;
  MarkdownMemoryUse use_;
  cmark_node* root_ = nullptr;
};

/// The text of a node that has no children; "" if it has none.
std::string_view literalOf(cmark_node* node);

/// Whether it is of that type, which an extension of CommonMark adds: "table", "table_header",
/// "table_row", "table_cell", "strikethrough" or "tasklist".
bool isOfType(cmark_node* node, std::string_view type);

}  // namespace text
