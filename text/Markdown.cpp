// SPDX-License-Identifier: MIT
#include "text/Markdown.h"

#include <cmark-gfm-core-extensions.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <string>

namespace text {

namespace {

constexpr std::size_t kMaxMemory = std::size_t{64} << 20;
// Each line may be compared with each open block, and each mark or blank at the beginning of a line
// may open a block.
constexpr std::size_t kMaxMarks = 1000;
constexpr std::size_t kMaxComparisons = std::size_t{1} << 21;
// For each bracket after an address, the whole address is searched for the one that opens it.
constexpr std::size_t kMaxBrackets = 1000;

/// cmark passes nothing to its allocator that would lead to the memory.
thread_local MarkdownMemory* current = nullptr;

/// Precedes each block: cmark does not say how large a block is that is to grow.
struct alignas(std::max_align_t) BlockHeader {
  std::size_t size;
};

// cmark expects that its allocator never fails, so these functions throw. It is C, but has nothing
// to clean up, as all it holds is this memory.

void* allocate(std::size_t count, std::size_t size) {
  return std::memset(current->allocate(count * size), 0, count * size);
}

void* reallocate(void* block, std::size_t size) {
  void* const larger = current->allocate(size);
  if (block == nullptr) return larger;
  const std::size_t oldSize = (static_cast<BlockHeader*>(block) - 1)->size;
  return std::memcpy(larger, block, std::min(oldSize, size));
}

void release(void* /*block*/) {}

/// Those that galleries of code understand.
constexpr std::array kExtensionNames{"table", "strikethrough", "autolink", "tasklist"};
using Extensions = std::array<cmark_syntax_extension*, kExtensionNames.size()>;

/// The extensions of cmark live until the program ends. Their memory comes from the default
/// allocator, which would end the program if it failed.
const Extensions& extensions() {
  static MarkdownMemory memory(kMaxMemory);
  static const Extensions found = [] {
    const MarkdownMemoryUse use(memory);
    *cmark_get_default_mem_allocator() = {allocate, reallocate, release};
    cmark_gfm_core_extensions_ensure_registered();
    Extensions all{};
    std::transform(kExtensionNames.begin(), kExtensionNames.end(), all.begin(),
                   cmark_find_syntax_extension);
    return all;
  }();
  return found;
}

bool isReadable(std::string_view text) {
  static const std::string tooManyBrackets(kMaxBrackets, ')');
  if (text.find(tooManyBrackets) != text.npos) return false;
  std::size_t lines = 0;
  std::size_t mostMarks = 0;
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find_first_of("\r\n"));
    const std::size_t marks = line.find_first_not_of(" \t>-+*.)0123456789");
    mostMarks = std::max(mostMarks, std::min(marks, line.size()));
    ++lines;
    text.remove_prefix(std::min(line.size() + 1, text.size()));
  }
  return mostMarks <= kMaxMarks && mostMarks * lines <= kMaxComparisons;
}

}  // namespace

void* MarkdownMemory::allocate(std::size_t size) {
  const std::size_t whole = size + sizeof(BlockHeader);
  if (whole > left_) throw LimitExceeded();
  left_ -= whole;
  return new (blocks_.allocate(whole, alignof(BlockHeader))) BlockHeader{size} + 1;
}

MarkdownMemoryUse::MarkdownMemoryUse(MarkdownMemory& memory) : previous_(current) {
  current = &memory;
}

MarkdownMemoryUse::~MarkdownMemoryUse() {
  current = previous_;
}

Markdown::Markdown(std::string_view text) : memory_(kMaxMemory), use_(memory_) {
  if (!isReadable(text)) return;
  const Extensions& all = extensions();
  try {
    cmark_parser* const parser = cmark_parser_new(CMARK_OPT_VALIDATE_UTF8);
    for (cmark_syntax_extension* const each : all) {
      cmark_parser_attach_syntax_extension(parser, each);
    }
    cmark_parser_feed(parser, text.data(), text.size());
    root_ = cmark_parser_finish(parser);
    memory_.removeLimit();
  } catch (const MarkdownMemory::LimitExceeded&) {
    // Then there is no document.
  }
}

std::string_view literalOf(cmark_node* node) {
  const char* const literal = cmark_node_get_literal(node);
  return literal == nullptr ? std::string_view() : literal;
}

bool isOfType(cmark_node* node, std::string_view type) {
  return cmark_node_get_type_string(node) == type;
}

}  // namespace text
