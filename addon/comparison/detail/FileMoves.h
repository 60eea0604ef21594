// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <vector>

#include "addon/comparison/FileComparison.h"

namespace addon::comparison::detail {

/// Makes moved files of removed and added ones of the same content, each of which goes into one
/// move at most. `hash` fills in the hash of a difference that needs one.
void joinMoved(std::vector<FileDifference>& differences,
               const std::function<void(FileDifference&)>& hash);

}  // namespace addon::comparison::detail
