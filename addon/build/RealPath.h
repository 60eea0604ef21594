// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace addon::build {

/// The path without links; "" when there is nothing at it.
std::string realPath(const std::string& path);

/// Whether one real path is another or lies below it.
bool liesIn(std::string_view path, std::string_view folder);

}  // namespace addon::build
