// SPDX-License-Identifier: MIT
#include <array>

#include "tool/Arguments.h"
#include "tool/CommandTable.h"
#include "tool/Help.h"
#include "tool/Output.h"

namespace tool {

namespace {

constexpr std::array kOperands{
    OperandSpec{"COMMAND", "what to tell about; without it all commands are listed", false}};

ExitCode run(const Invocation& invocation) {
  const auto& names = invocation.operands();
  Output output;
  output.write(names.empty() ? programHelp() : helpOf(findCommand(names[0])));
  output.flush();
  return ExitCode::Done;
}

}  // namespace

constexpr CommandSpec kHelpCommand{"help", "tells about a command", "", kOperands, {}, run};

}  // namespace tool
