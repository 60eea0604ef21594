// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace addon::project {

/// A TOML string on one line. `text` is UTF-8.
std::string tomlString(std::string_view text);

/// A TOML string that keeps its lines, if it has several. Line ends become LF.
std::string tomlBlock(std::string_view text);

/// A TOML array of strings: on one line when it fits, else one string a line.
std::string tomlArray(const std::vector<std::string>& texts);

/// A comment, ended by a line end. Control characters, and bytes that are no UTF-8, become escapes.
std::string tomlComment(std::string_view text);

}  // namespace addon::project
