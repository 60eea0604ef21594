// SPDX-License-Identifier: MIT
#include "tool/CommandTable.h"

#include <array>

#include "opc/Suggest.h"
#include "tool/Arguments.h"
#include "tool/Errors.h"

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
                            opc::suggestion(name, names, "'kraddon help' lists the commands")));
}

std::span<const OptionSpec> commonOptions() {
  static constexpr std::array kOptions{
      OptionSpec{"quiet", 'q', "", "no progress, no warnings"},
      OptionSpec{"verbose", 'v', "", "say more on standard error"},
      OptionSpec{"color", 0, "WHEN", "colours on a terminal: auto, always or never", false, false,
                 colorModes},
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
