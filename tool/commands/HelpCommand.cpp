// SPDX-License-Identifier: MIT
#include <array>

#include "tool/commands/CommandTable.h"
#include "tool/line/Arguments.h"
#include "tool/line/Help.h"
#include "tool/report/Output.h"

namespace tool::commands {

namespace {

constexpr std::array kOperands{line::OperandSpec{.name = "COMMAND",
                                                 .help = "the command (default: list all commands)",
                                                 .isRequired = false,
                                                 .choices = commandNames}};

process::ExitCode run(const line::Invocation& invocation) {
  const auto& names = invocation.operands();
  report::Output output;
  output.write(names.empty() ? line::programHelp(allCommands())
                             : line::helpOf(findCommand(names[0])));
  output.flush();
  return process::ExitCode::Done;
}

constexpr std::array kExamples{line::ExampleSpec{"kraddon help create", "shows help for 'create'"},
                               line::ExampleSpec{"kraddon help", "lists all commands"}};

}  // namespace

constexpr line::CommandSpec kHelpCommand{
    .name = "help",
    .summary = "shows help for a command",
    .description = "Prints the same as 'kraddon COMMAND --help'.",
    .operands = kOperands,
    .run = run,
    .examples = kExamples};

}  // namespace tool::commands
