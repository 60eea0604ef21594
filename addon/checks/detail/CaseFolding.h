// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace addon::checks::detail {

/// UTF-8 text with the case of its letters taken away, character by character, as file systems that
/// do not tell cases apart compare names.
std::string foldCase(std::string_view text);

}  // namespace addon::checks::detail
