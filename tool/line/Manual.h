// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

#include "tool/line/Command.h"

namespace tool::line {

/// The pages of section 1, in man(7): of the program, and of one command. They come out of what
/// help prints, and are the same whenever they are made.
std::string programManual(CommandList commands, std::string_view version);
std::string manualOf(const CommandSpec& command, CommandList commands, std::string_view version);

/// Text so that the formatter shows every character of it as it stands.
std::string escapedForManual(std::string_view text);

}  // namespace tool::line
