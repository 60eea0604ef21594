// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

namespace text {

/// Lines [aBegin, aEnd) of the first text have become lines [bBegin, bEnd) of the second.
struct ChangedBlock {
  std::size_t aBegin;
  std::size_t aEnd;
  std::size_t bBegin;
  std::size_t bEnd;
  friend bool operator==(const ChangedBlock&, const ChangedBlock&) = default;
};

using Lines = std::vector<std::string_view>;

/// Each line with its line end; the last one may have none.
Lines splitLines(std::string_view text);

/// What differs, in order, with at least one same line between two blocks. Takes time in proportion
/// to the number of lines, with a large factor: of texts that differ beyond that, whole stretches
/// count as replaced.
std::vector<ChangedBlock> compareLines(std::span<const std::string_view> a,
                                       std::span<const std::string_view> b);

}  // namespace text
