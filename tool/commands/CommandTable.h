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
extern const line::CommandSpec kIndexCommand;
extern const line::CommandSpec kInfoCommand;
extern const line::CommandSpec kInitCommand;
extern const line::CommandSpec kListCommand;
extern const line::CommandSpec kMkdirCommand;
extern const line::CommandSpec kMvCommand;
extern const line::CommandSpec kPreviewCommand;
extern const line::CommandSpec kRemoveCommand;
extern const line::CommandSpec kSbomCommand;
extern const line::CommandSpec kSchemaCommand;
extern const line::CommandSpec kScreenshotCommand;
extern const line::CommandSpec kSearchCommand;
extern const line::CommandSpec kSetCommand;
extern const line::CommandSpec kSignCommand;
extern const line::CommandSpec kSignaturesCommand;
extern const line::CommandSpec kUnsetCommand;
extern const line::CommandSpec kUnsignCommand;
extern const line::CommandSpec kVerifyCommand;

/// All commands, in the order in which help lists them.
line::CommandList allCommands();

/// Their names, in the order of the enumeration.
std::vector<std::string> commandNames();

/// The command with that name. If there is none, throws UsageError that suggests the nearest one.
const line::CommandSpec& findCommand(std::string_view name);

}  // namespace tool::commands
