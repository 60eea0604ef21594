// SPDX-License-Identifier: MIT
#include <array>

#include "tool/commands/CommandTable.h"
#include "tool/line/Arguments.h"
#include "tool/line/Help.h"
#include "tool/report/Output.h"

namespace tool::commands {

namespace {

constexpr std::array kOperands{
    line::OperandSpec{.name = "COMMAND",
                      .help = "what to tell about; without it all commands are listed",
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

constexpr std::array kExamples{line::ExampleSpec{"kraddon help create", "tells about 'create'"},
                               line::ExampleSpec{"kraddon help", "lists all commands"}};

}  // namespace

constexpr line::CommandSpec kHelpCommand{
    .name = "help",
    .summary = "tells about a command",
    .description = "Prints what 'kraddon COMMAND --help' prints.",
    .operands = kOperands,
    .run = run,
    .examples = kExamples};

}  // namespace tool::commands
