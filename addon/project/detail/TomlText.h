// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace addon::project::detail {

/// A TOML string on one line. `text` is UTF-8.
std::string tomlString(std::string_view text);

/// A TOML string, with its lines kept if there are several. Line ends become LF.
std::string tomlBlock(std::string_view text);

/// A TOML array of strings, on one line if it fits, else with one string per line.
std::string tomlArray(const std::vector<std::string>& texts);

/// A comment, with a line end. Control characters and bytes that are not UTF-8 are escaped.
std::string tomlComment(std::string_view text);

}  // namespace addon::project::detail
