// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "tool/Command.h"

namespace tool {

/// "usage: kraddon create PACKAGE [FOLDER] --name TEXT [options]", one line.
std::string usageOf(const CommandSpec& command);

/// All that there is to say about a command.
std::string helpOf(const CommandSpec& command);

/// The usage of the program in one line, and all its commands.
std::string programUsage();
std::string programHelp();

}  // namespace tool
