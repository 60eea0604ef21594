// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace tool {

/// Prints "kraddon: `command`: `message`" and, unless it is empty, "hint: `hint`" to standard
/// error, control characters replaced, in one write. `command` may be empty.
void printError(std::string_view command, std::string_view message, std::string_view hint = {});

/// The same for something that does not end the command.
void printWarning(std::string_view command, std::string_view message);

/// Prints text as it is to standard error. A standard error that cannot be written is no failure:
/// there is nowhere left to say so.
void printToStandardError(std::string_view text) noexcept;

}  // namespace tool
