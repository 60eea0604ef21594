// SPDX-License-Identifier: MIT
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tool/line/Command.h"

namespace tool {

/// All commands, in the order in which help lists them.
std::span<const CommandSpec* const> commands();

/// Their names, in that order.
std::vector<std::string> commandNames();

/// The command of that name. Throws UsageError, with the nearest name, when there is none.
const CommandSpec& findCommand(std::string_view name);

/// Options that every command takes, before and after its name.
std::span<const OptionSpec> commonOptions();

/// Options that only make sense before the command's name.
std::span<const OptionSpec> leadingOptions();

}  // namespace tool
