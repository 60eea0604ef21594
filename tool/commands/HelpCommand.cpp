// SPDX-License-Identifier: MIT
#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "text/Suggest.h"
#include "tool/commands/CommandTable.h"
#include "tool/line/Arguments.h"
#include "tool/line/Help.h"
#include "tool/process/Errors.h"
#include "tool/report/Output.h"
#include "tool/report/Topics.h"

namespace tool::commands {

namespace {

std::vector<std::string> subjects() {
  std::vector<std::string> names = commandNames();
  for (const line::Topic& topic : report::topics()) names.push_back(topic.name);
  return names;
}

constexpr std::array kOperands{line::OperandSpec{.name = "COMMAND|TOPIC",
                                                 .help = "a command, or 'manifest', 'patterns' or "
                                                         "'findings' (default: list all commands)",
                                                 .isRequired = false,
                                                 .choices = subjects}};

std::string helpAbout(std::string_view subject) {
  for (const line::Topic& topic : report::topics()) {
    if (topic.name == subject) return line::helpOf(topic);
  }
  for (const line::CommandSpec* command : allCommands()) {
    if (command->name == subject) return line::helpOf(*command);
  }
  const std::vector<std::string> names = subjects();
  throw process::UsageError(process::sentence(
      "unknown command or topic", subject,
      text::suggestion(subject, std::vector<std::string_view>(names.begin(), names.end()),
                       "'kraddon help' lists the commands and topics")));
}

process::ExitCode run(const line::Invocation& invocation) {
  const auto& names = invocation.operands();
  report::Output output;
  output.write(names.empty() ? line::programHelp(allCommands()) : helpAbout(names[0]));
  output.flush();
  return process::ExitCode::Done;
}

constexpr std::array kExamples{
    line::ExampleSpec{"kraddon help create", "shows help for 'create'"},
    line::ExampleSpec{"kraddon help manifest", "explains every key of kraddon.toml"},
    line::ExampleSpec{"kraddon help", "lists all commands"}};

}  // namespace

constexpr line::CommandSpec kHelpCommand{
    .name = "help",
    .summary = "shows help for a command or topic",
    .description =
        "Prints the same as 'kraddon COMMAND --help'. The topics are 'manifest' (the keys of "
        "kraddon.toml), 'patterns' (patterns of paths) and 'findings' (what 'verify' "
        "reports).",
    .operands = kOperands,
    .run = run,
    .examples = kExamples};

}  // namespace tool::commands
