// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace tool::commands::detail {

/// A text of a package for a column of a line: line ends and tabs become blanks.
std::string inOneLine(std::string text);

}  // namespace tool::commands::detail
