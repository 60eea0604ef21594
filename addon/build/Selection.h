// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "addon/comparison/Contents.h"

namespace addon::build {

/// Chooses the items that the PATH operands of a command name: literal paths, or patterns with
/// --glob. A folder includes everything below it; without operands, everything is chosen. If
/// several patterns match an item or a folder above it, the last one decides (PatternChoice).
///
/// Returns the chosen `items` in the same order. Throws BuildError for an operand that matches
/// nothing.
std::vector<addon::comparison::Item> choose(std::vector<addon::comparison::Item> items,
                                            const std::vector<std::string>& operands,
                                            bool areGlobs);

/// The same for two trees: an operand is valid if it matches something in either.
void chooseInBoth(std::vector<addon::comparison::Item>& a, std::vector<addon::comparison::Item>& b,
                  const std::vector<std::string>& operands, bool areGlobs);

/// The files and folders that literal paths name, one for each operand; "/" is the root. Throws
/// BuildError for an operand that does not exist.
std::vector<opc::plservices::FileSystemEntry> findEntries(addon::packaging::AddonPackage& package,
                                                          const std::vector<std::string>& operands);

}  // namespace addon::build
