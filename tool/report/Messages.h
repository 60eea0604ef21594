// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tool::line {
class Invocation;
}

namespace tool::report {

/// Prints "kraddon: `command`: `message`" and, unless it is empty, "hint: `hint`" to standard
/// error, control characters replaced, in one write. `command` may be empty.
void printError(std::string_view command, std::string_view message, std::string_view hint = {});

/// Reports that memory is exhausted, without allocating any.
void printLackOfMemory(std::string_view command) noexcept;

/// Prints "kraddon: `command`: warning: `message`" in the same way, unless --quiet is set.
void printWarning(const line::Invocation& invocation, std::string_view message);

/// Prints "kraddon: `command`: `message`" in the same way, unless --quiet is set.
void printNotice(const line::Invocation& invocation, std::string_view message);

// Texts for standard error, for commands that must not run out of memory after their work is done.

/// What printWarning() prints.
std::string describeWarning(const line::Invocation& invocation, std::string_view message);
/// With --verbose, "`verb`: NAME" for each of the names, control characters replaced.
std::string describeDone(const line::Invocation& invocation, std::string_view verb,
                         const std::vector<std::string>& names);

/// Prints text unchanged to standard error. Errors are ignored, since there is nowhere to report
/// them.
void printToStandardError(std::string_view text) noexcept;

}  // namespace tool::report
