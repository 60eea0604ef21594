// SPDX-License-Identifier: MIT
#include "tool/commands/CommandTable.h"

#include <array>

#include "text/Suggest.h"
#include "tool/line/Arguments.h"
#include "tool/process/Errors.h"

namespace tool {

std::span<const CommandSpec* const> commands() {
  static constexpr std::array kCommands{
      &kCreateCommand,  &kBuildCommand, &kInitCommand,       &kInfoCommand,       &kListCommand,
      &kExtractCommand, &kAddCommand,   &kRemoveCommand,     &kMkdirCommand,      &kGetCommand,
      &kSetCommand,     &kUnsetCommand, &kScreenshotCommand, &kVerifyCommand,     &kDiffCommand,
      &kPreviewCommand, &kCallCommand,  &kSchemaCommand,     &kCompletionCommand, &kHelpCommand};
  return kCommands;
}

std::vector<std::string> commandNames() {
  std::vector<std::string> names;
  for (const CommandSpec* command : commands()) names.emplace_back(command->name);
  return names;
}

const CommandSpec& findCommand(std::string_view name) {
  std::vector<std::string_view> names;
  for (const CommandSpec* command : commands()) {
    if (command->name == name) return *command;
    names.push_back(command->name);
  }
  throw UsageError(sentence("unknown command", name,
                            text::suggestion(name, names, "'kraddon help' lists the commands")));
}

std::span<const OptionSpec> commonOptions() {
  static constexpr std::array kOptions{
      OptionSpec{.longName = "quiet", .shortName = 'q', .help = "no progress, no warnings"},
      OptionSpec{.longName = "verbose", .shortName = 'v', .help = "say more on standard error"},
      OptionSpec{.longName = "color",
                 .valueName = "WHEN",
                 .help = "colours on a terminal: auto, always or never",
                 .choices = colorModes},
      OptionSpec{.longName = "help", .shortName = 'h', .help = "show this help"},
  };
  return kOptions;
}

std::span<const OptionSpec> leadingOptions() {
  static constexpr std::array kOptions{
      OptionSpec{.longName = "directory",
                 .shortName = 'C',
                 .valueName = "DIR",
                 .help = "work as if started in DIR"},
      OptionSpec{.longName = "version", .help = "show the version"},
  };
  return kOptions;
}

}  // namespace tool
