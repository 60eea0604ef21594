// SPDX-License-Identifier: MIT
#pragma once

namespace tool::process {

/// The exit code of the program. For a command that compares, the code is the result, and every
/// failure is Trouble.
enum class ExitCode { Done = 0, Failed = 1, Different = Failed, WrongUsage = 2, Trouble = 2 };

}  // namespace tool::process
