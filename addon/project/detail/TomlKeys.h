// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string_view>

namespace addon::project::detail {

/// The position of the first key with more than 16 parts (`a.b.c`) in a TOML text, or npos. The
/// parser recurses once for each part of a key.
std::size_t findLongKey(std::string_view text);

}  // namespace addon::project::detail
