// SPDX-License-Identifier: MIT
#include "tool/CommandTable.h"

#include <array>

#include "tool/Errors.h"
#include "tool/Suggest.h"

namespace tool {

std::span<const CommandSpec* const> commands() {
  static constexpr std::array kCommands{
      &kCreateCommand,     &kInfoCommand,   &kListCommand, &kExtractCommand, &kAddCommand,
      &kRemoveCommand,     &kMkdirCommand,  &kGetCommand,  &kSetCommand,     &kUnsetCommand,
      &kScreenshotCommand, &kVerifyCommand, &kCallCommand, &kHelpCommand};
  return kCommands;
}

const CommandSpec& findCommand(std::string_view name) {
  std::vector<std::string_view> names;
  for (const CommandSpec* command : commands()) {
    if (command->name == name) return *command;
    names.push_back(command->name);
  }
  throw UsageError(sentence("unknown command", name,
                            suggestion(name, names, "'kraddon help' lists the commands")));
}

std::span<const OptionSpec> commonOptions() {
  static constexpr std::array kOptions{
      OptionSpec{"quiet", 'q', "", "no progress, no warnings"},
      OptionSpec{"verbose", 'v', "", "say more on standard error"},
      OptionSpec{"color", 0, "WHEN", "colours on a terminal: auto, always or never"},
      OptionSpec{"help", 'h', "", "show this help"},
  };
  return kOptions;
}

std::span<const OptionSpec> leadingOptions() {
  static constexpr std::array kOptions{
      OptionSpec{"directory", 'C', "DIR", "work as if started in DIR"},
      OptionSpec{"version", 0, "", "show the version"},
  };
  return kOptions;
}

}  // namespace tool
