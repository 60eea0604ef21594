// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "addon/project/Guesses.h"

namespace addon::project {

/// An initial manifest: the guesses, each below a comment that names its source, and the other keys
/// as comments.
std::string manifestText(const Guesses& guesses);

}  // namespace addon::project
