// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace addon::catalogue {

/// Orders versions: runs of digits by their value (1.10 after 1.9), everything else by its bytes; a
/// text that begins with all of the other comes after it. Negative, zero or positive; zero only for
/// equal texts.
int compareVersions(std::string_view a, std::string_view b) noexcept;

}  // namespace addon::catalogue
