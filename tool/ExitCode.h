// SPDX-License-Identifier: MIT
#pragma once

namespace tool {

/// What the program says to whoever started it.
enum class ExitCode { Done = 0, Failed = 1, WrongUsage = 2 };

}  // namespace tool
