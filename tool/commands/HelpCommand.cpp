// SPDX-License-Identifier: MIT
#include <array>

#include "tool/line/Arguments.h"
#include "tool/commands/CommandTable.h"
#include "tool/line/Help.h"
#include "tool/report/Output.h"

namespace tool {

namespace {

constexpr std::array kOperands{
    OperandSpec{.name = "COMMAND",
                .help = "what to tell about; without it all commands are listed",
                .isRequired = false,
                .choices = commandNames}};

ExitCode run(const Invocation& invocation) {
  const auto& names = invocation.operands();
  Output output;
  output.write(names.empty() ? programHelp() : helpOf(findCommand(names[0])));
  output.flush();
  return ExitCode::Done;
}

constexpr std::array kExamples{ExampleSpec{"kraddon help create", "tells about 'create'"},
                               ExampleSpec{"kraddon help", "lists all commands"}};

}  // namespace

constexpr CommandSpec kHelpCommand{.name = "help",
                                   .summary = "tells about a command",
                                   .description = "Prints what 'kraddon COMMAND --help' prints.",
                                   .operands = kOperands,
                                   .run = run,
                                   .examples = kExamples};

}  // namespace tool
