// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace tool::commands::detail {

/// Converts a path or text of the command line for the library. Throws Failure, whose message
/// begins with `what`, if it is not UTF-8.
std::u16string toUtf16(std::string_view what, const std::string& text);

/// The name after the last '/'.
std::string fileNameOf(const std::string& path);
/// The same without its last extension.
std::string baseNameOf(const std::string& path);

}  // namespace tool::commands::detail
