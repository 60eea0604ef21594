// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string_view>

namespace addon::project {

/// Where a TOML text has a key of more than 16 parts (`a.b.c`); npos when it has none. The parser
/// goes as deep into its own stack as a key has parts.
std::size_t findLongKey(std::string_view text);

}  // namespace addon::project
