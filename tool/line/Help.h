// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "tool/line/Command.h"

namespace tool::line {

/// The purpose of the program, in one line.
inline constexpr std::string_view kProgramPurpose =
    "Creates, inspects, checks, extracts and changes Korvan add-on packages.";

/// The help of an option, and whether it is required or repeatable.
std::string helpOf(const OptionSpec& option);

/// The words after the name of a command: "--name TEXT", "[OPTION...]", "PACKAGE", "[FOLDER]".
std::vector<std::string> synopsisOf(const CommandSpec& command);

/// "usage: kraddon create --name TEXT [OPTION...] PACKAGE [FOLDER]".
std::string usageOf(const CommandSpec& command);

/// "Run 'kraddon help create' for details.", a line for after the usage.
std::string helpPointerOf(const CommandSpec& command);

/// The complete help of a command.
std::string helpOf(const CommandSpec& command);

/// The usage of the program, and the help that lists all commands.
std::string programUsage();
std::string programHelp(CommandList commands);

}  // namespace tool::line
