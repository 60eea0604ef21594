// SPDX-License-Identifier: MIT
#include "text/UnifiedHunks.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

namespace text {

namespace {

constexpr std::size_t kContext = 3;

using LineSpan = std::span<const std::string_view>;
using BlockSpan = std::span<const ChangedBlock>;

/// "12,3", but "12" for a single line, and "11,0" for none after line 11.
std::string rangeText(std::size_t begin, std::size_t end) {
  const std::size_t count = end - begin;
  if (count == 1) return fmt::format("{}", end);
  return fmt::format("{},{}", count == 0 ? begin : begin + 1, count);
}

/// How many of the blocks go into one hunk: those whose context touches.
std::size_t blocksTogether(BlockSpan blocks) {
  std::size_t count = 1;
  while (count < blocks.size() && blocks[count].aBegin - blocks[count - 1].aEnd <= 2 * kContext) {
    ++count;
  }
  return count;
}

class Writer {
 public:
  Writer(LineSpan a, LineSpan b, const HunkSink& sink) : a_(a), b_(b), sink_(sink) {}

  void writeHunk(BlockSpan blocks) {
    const std::size_t before = std::min(kContext, blocks.front().aBegin);
    const std::size_t after = std::min(kContext, a_.size() - blocks.back().aEnd);
    const std::size_t begin = blocks.front().aBegin - before;
    const std::size_t end = blocks.back().aEnd + after;
    sink_(HunkLine::Header,
          fmt::format("@@ -{} +{} @@", rangeText(begin, end),
                      rangeText(blocks.front().bBegin - before, blocks.back().bEnd + after)));
    std::size_t next = begin;
    for (const ChangedBlock& block : blocks) {
      writeLines(HunkLine::Same, a_.subspan(next, block.aBegin - next));
      writeLines(HunkLine::Removed, a_.subspan(block.aBegin, block.aEnd - block.aBegin));
      writeLines(HunkLine::Added, b_.subspan(block.bBegin, block.bEnd - block.bBegin));
      next = block.aEnd;
    }
    writeLines(HunkLine::Same, a_.subspan(next, end - next));
  }

 private:
  void writeLines(HunkLine kind, LineSpan lines) {
    for (const std::string_view line : lines) {
      const bool hasEnd = line.ends_with('\n');
      sink_(kind, hasEnd ? line.substr(0, line.size() - 1) : line);
      if (!hasEnd) sink_(HunkLine::NoLineEnd, "\\ No newline at end of file");
    }
  }

  LineSpan a_;
  LineSpan b_;
  const HunkSink& sink_;
};

bool needsQuotes(char c) {
  return static_cast<unsigned char>(c) < 0x20 || c == 0x7F || c == '"' || c == '\\';
}

}  // namespace

void visitHunks(LineSpan a, LineSpan b, BlockSpan blocks, const HunkSink& sink) {
  Writer writer(a, b, sink);
  while (!blocks.empty()) {
    const std::size_t count = blocksTogether(blocks);
    writer.writeHunk(blocks.first(count));
    blocks = blocks.subspan(count);
  }
}

std::string patchName(std::string_view path) {
  // GNU patch takes away blanks at the end of a name without quotes, even before a tab.
  if (!path.ends_with(' ') && std::none_of(path.begin(), path.end(), needsQuotes)) {
    const bool hasBlank = path.find(' ') != std::string_view::npos;
    return std::string(path) + (hasBlank ? "\t" : "");
  }
  std::string text = "\"";
  for (const char c : path) {
    if (c == '"' || c == '\\') {
      text += '\\';
      text += c;
    } else if (needsQuotes(c)) {
      fmt::format_to(std::back_inserter(text), "\\{:03o}", static_cast<unsigned char>(c));
    } else {
      text += c;
    }
  }
  return text + '"';
}

}  // namespace text
