// SPDX-License-Identifier: MIT
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

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

/// The path that `word` was probably meant to be, or "" when none is near: one of the `paths`, or a
/// folder above one. The same name in another case, with other slashes or in another folder is
/// near.
std::string nearestPath(std::string_view word, const std::vector<std::string_view>& paths);

}  // namespace text
