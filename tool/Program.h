// SPDX-License-Identifier: MIT
#pragma once

#include <span>

#include "tool/process/ExitCode.h"

namespace tool {

/// Runs the whole program on the words after its name. Reports every failure; ends the process
/// by the signal that interrupted it, if one did.
process::ExitCode runProgram(std::span<char* const> arguments);

}  // namespace tool
