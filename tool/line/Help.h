// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "tool/line/Command.h"

namespace tool::line {

/// What the program is for, in one line.
inline constexpr std::string_view kProgramPurpose =
    "Creates, inspects, checks, extracts and changes Korvan add-on packages.";

/// What an option does, and whether it is required or may be repeated.
std::string helpOf(const OptionSpec& option);

/// What follows the name of a command: "--name TEXT", "[OPTION...]", "PACKAGE", "[FOLDER]".
std::vector<std::string> synopsisOf(const CommandSpec& command);

/// "usage: kraddon create --name TEXT [OPTION...] PACKAGE [FOLDER]".
std::string usageOf(const CommandSpec& command);

/// All that there is to say about a command.
std::string helpOf(const CommandSpec& command);

/// The usage of the program in one line, and all its commands.
std::string programUsage();
std::string programHelp(CommandList commands);

}  // namespace tool::line
