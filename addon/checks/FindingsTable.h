// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace addon::checks {

/// The page of the manual with every finding there is, as Markdown.
std::string findingsTable();

}  // namespace addon::checks
