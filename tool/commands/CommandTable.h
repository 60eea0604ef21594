// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tool/line/Command.h"

namespace tool::commands {

// Each is described in the source of its name.
extern const line::CommandSpec kAddCommand;
extern const line::CommandSpec kBuildCommand;
extern const line::CommandSpec kCallCommand;
extern const line::CommandSpec kCompletionCommand;
extern const line::CommandSpec kCreateCommand;
extern const line::CommandSpec kDiffCommand;
extern const line::CommandSpec kExtractCommand;
extern const line::CommandSpec kGetCommand;
extern const line::CommandSpec kHelpCommand;
extern const line::CommandSpec kInfoCommand;
extern const line::CommandSpec kInitCommand;
extern const line::CommandSpec kListCommand;
extern const line::CommandSpec kMkdirCommand;
extern const line::CommandSpec kPreviewCommand;
extern const line::CommandSpec kRemoveCommand;
extern const line::CommandSpec kSchemaCommand;
extern const line::CommandSpec kScreenshotCommand;
extern const line::CommandSpec kSetCommand;
extern const line::CommandSpec kUnsetCommand;
extern const line::CommandSpec kVerifyCommand;

/// All of them, in the order in which help lists them.
line::CommandList allCommands();

/// Their names, in that order.
std::vector<std::string> commandNames();

/// The command of that name. Throws UsageError, with the nearest name, when there is none.
const line::CommandSpec& findCommand(std::string_view name);

}  // namespace tool::commands
