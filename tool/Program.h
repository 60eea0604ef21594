// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "tool/ExitCode.h"

namespace tool {

/// Runs the whole program on the words after its name. Reports every failure; ends the process
/// by the signal that interrupted it, if one did.
ExitCode runProgram(const std::vector<std::string>& words);

}  // namespace tool
