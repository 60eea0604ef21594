// SPDX-License-Identifier: MIT
#include <array>

#include "tool/Arguments.h"
#include "tool/CommandTable.h"
#include "tool/Help.h"
#include "tool/Output.h"

namespace tool {

namespace {

constexpr std::array kOperands{OperandSpec{"COMMAND",
                                           "what to tell about; without it all commands are listed",
                                           false, false, commandNames}};

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

constexpr CommandSpec kHelpCommand{"help",
                                   "tells about a command",
                                   "Prints what 'kraddon COMMAND --help' prints.",
                                   kOperands,
                                   {},
                                   run,
                                   kExamples};

}  // namespace tool
