// SPDX-License-Identifier: MIT
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace text {

/// How many letters must be changed, added, removed or swapped with their neighbour to make `b` of
/// `a`; case does not count.
std::size_t editDistance(std::string_view a, std::string_view b);

/// The candidate that `word` was probably meant to be, or "" when none is near. Of equally near
/// ones the first.
std::string_view nearest(std::string_view word, std::span<const std::string_view> candidates);

/// "did you mean 'x'?" for the nearest candidate, and `otherwise` when none is near.
std::string suggestion(std::string_view word, std::span<const std::string_view> candidates,
                       std::string_view otherwise);

}  // namespace text
