// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace tool::line {
class Invocation;
}

namespace tool::report {

/// Prints "kraddon: `command`: `message`" and, unless it is empty, "hint: `hint`" to standard
/// error, control characters replaced, in one write. `command` may be empty.
void printError(std::string_view command, std::string_view message, std::string_view hint = {});

/// The error that there is no memory; needs none.
void printLackOfMemory(std::string_view command) noexcept;

/// Prints "kraddon: `command`: warning: `message`" in the same way for something that does not end
/// the command, unless that was told to be quiet.
void printWarning(const line::Invocation& invocation, std::string_view message);

/// Prints text as it is to standard error. A standard error that cannot be written is no failure:
/// there is nowhere left to say so.
void printToStandardError(std::string_view text) noexcept;

}  // namespace tool::report
