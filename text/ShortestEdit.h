// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace text {

/// Which elements of two sequences do not stand in the other one. What is left when they are taken
/// away is the same on both sides.
struct Edit {
  std::vector<bool> isRemoved;  ///< of each element of the first
  std::vector<bool> isAdded;    ///< of each element of the second
};

/// As few changes as possible, found from both ends as E. Myers describes it ("An O(ND) Difference
/// Algorithm and Its Variations"), in linear memory. Takes about `maxSteps` steps at most: what
/// cannot be worked out within them counts as removed and added as a whole.
Edit findShortestEdit(std::span<const std::uint32_t> a, std::span<const std::uint32_t> b,
                      std::uint64_t maxSteps);

}  // namespace text
