// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "addon/comparison/Contents.h"

namespace tool::commands::detail {

/// What the PATH operands of a command choose: literal paths, or patterns with --glob. A folder
/// takes what lies below it; no operand takes everything. Of patterns that match an item or a
/// folder above it the last one decides (PatternChoice).
///
/// Returns the chosen ones of `items`, order kept. Throws Failure for an operand that names
/// nothing.
std::vector<addon::comparison::Item> choose(std::vector<addon::comparison::Item> items,
                                            const std::vector<std::string>& operands,
                                            bool areGlobs);

/// The same for two trees at once: an operand is good when it names something in either.
void chooseInBoth(std::vector<addon::comparison::Item>& a, std::vector<addon::comparison::Item>& b,
                  const std::vector<std::string>& operands, bool areGlobs);

/// The files and folders that literal paths name, one an operand, "/" the root. Throws Failure for
/// one that names nothing.
std::vector<opc::plservices::FileSystemEntry> findEntries(addon::packaging::AddonPackage& package,
                                                          const std::vector<std::string>& operands);

}  // namespace tool::commands::detail
