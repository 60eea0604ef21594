// SPDX-License-Identifier: MIT
#include "tool/commands/CommandTable.h"

#include <array>

#include "text/Suggest.h"
#include "tool/process/Errors.h"

namespace tool::commands {

line::CommandList allCommands() {
  static constexpr std::array kCommands{
      &kCreateCommand, &kBuildCommand,      &kInitCommand,   &kInfoCommand,
      &kListCommand,   &kExtractCommand,    &kAddCommand,    &kRemoveCommand,
      &kMvCommand,     &kMkdirCommand,      &kGetCommand,    &kSetCommand,
      &kUnsetCommand,  &kScreenshotCommand, &kVerifyCommand, &kSignCommand,
      &kUnsignCommand, &kSignaturesCommand, &kDiffCommand,   &kPreviewCommand,
      &kSbomCommand,   &kIndexCommand,      &kSearchCommand, &kCallCommand,
      &kSchemaCommand, &kCompletionCommand, &kHelpCommand};
  return kCommands;
}

std::vector<std::string> commandNames() {
  std::vector<std::string> names;
  for (const line::CommandSpec* command : allCommands()) names.emplace_back(command->name);
  return names;
}

const line::CommandSpec& findCommand(std::string_view name) {
  std::vector<std::string_view> names;
  for (const line::CommandSpec* command : allCommands()) {
    if (command->name == name) return *command;
    names.push_back(command->name);
  }
  throw process::UsageError(process::sentence(
      "unknown command", name, text::suggestion(name, names, "'kraddon help' lists the commands")));
}

}  // namespace tool::commands
