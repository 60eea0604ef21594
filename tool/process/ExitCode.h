// SPDX-License-Identifier: MIT
#pragma once

namespace tool::process {

/// What the program says to whoever started it. A command that compares answers with the code, and
/// then every failure is trouble.
enum class ExitCode { Done = 0, Failed = 1, Different = Failed, WrongUsage = 2, Trouble = 2 };

}  // namespace tool::process
