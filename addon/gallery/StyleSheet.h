// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace addon::gallery {

/// gallery.css, which the build makes a constant of.
extern const std::string_view kStyleSheet;

}  // namespace addon::gallery
