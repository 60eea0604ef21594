// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "addon/project/Guesses.h"

namespace addon::project {

/// A manifest to start from: what was guessed, each value below a comment that names its source,
/// and the other keys as comments.
std::string manifestText(const Guesses& guesses, const std::string& guid);

}  // namespace addon::project
