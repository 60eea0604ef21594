// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace addon::gallery::detail {

// The style sheets of this folder, which the build embeds, in the order in which they apply.
extern const std::string_view kPageStyle;
extern const std::string_view kCardsStyle;
extern const std::string_view kSectionsStyle;
extern const std::string_view kFilesStyle;
extern const std::string_view kMediaStyle;
extern const std::string_view kFrontStyle;

// The script of the list.
extern const std::string_view kFrontScript;

}  // namespace addon::gallery::detail
