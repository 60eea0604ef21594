// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <vector>

#include "tool/FileComparison.h"

namespace tool {

/// Makes moved files of removed and added ones of the same content, each of which goes into one
/// move at most. `hash` fills in the hash of a difference that needs one.
void joinMoved(std::vector<FileDifference>& differences,
               const std::function<void(FileDifference&)>& hash);

}  // namespace tool
