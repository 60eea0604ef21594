// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace addon::gallery::detail {

// The style sheets of this folder, which the build embeds, in the order in which they apply.
extern const std::string_view kPageStyle;
extern const std::string_view kSectionsStyle;
extern const std::string_view kFilesStyle;
extern const std::string_view kMediaStyle;

}  // namespace addon::gallery::detail
