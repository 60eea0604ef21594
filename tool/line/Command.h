// SPDX-License-Identifier: MIT
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tool/process/ExitCode.h"

namespace tool::line {

class Invocation;

/// Returns the allowed values or, for completion, how one may begin.
using Choices = std::vector<std::string> (*)();
/// The same, depending on the operands before it.
using ChoicesAfter = std::vector<std::string> (*)(std::span<const std::string> operands);

// People and completion know by the name of a value what it is: PACKAGE, FILE, FOLDER, SITE and DIR
// are on the disk, PATH, FROM and TO are in the package on the command line.

/// An option, as it is parsed and described.
struct OptionSpec {
  std::string_view longName;        ///< without the dashes
  char shortName = 0;               ///< without the dash; 0 if it has none
  std::string_view valueName = {};  ///< the name of its value in help; "" for a flag
  std::string_view help;            ///< one line
  bool isRepeatable = false;        ///< may be given several times
  bool isRequired = false;
  Choices choices = nullptr;  ///< null if any value is allowed
};

struct OperandSpec {
  std::string_view name;
  std::string_view help = {};  ///< one line; without it the choices
  bool isRequired = true;
  bool isRepeatable = false;  ///< the last one only
  Choices choices = nullptr;  ///< null if any value is allowed
  ChoicesAfter choicesAfter = nullptr;
  std::string_view hint = {};  ///< what to do if it is missing; may be empty
};

/// An example of a command line, and what it does.
struct ExampleSpec {
  std::string_view line;  ///< beginning with "kraddon"
  std::string_view help;
};

/// A command. Parsing, help, completion and manual all come from this one description.
struct CommandSpec {
  std::string_view name;
  std::string_view summary;           ///< one line
  std::string_view description = {};  ///< paragraphs for its own help
  std::span<const OperandSpec> operands = {};
  std::span<const OptionSpec> options = {};
  process::ExitCode (*run)(const Invocation& invocation) = nullptr;
  std::span<const ExampleSpec> examples = {};
  process::ExitCode failureCode = process::ExitCode::Failed;  ///< for every error but wrong usage
};

/// All commands of the program, in the order in which help lists them.
using CommandList = std::span<const CommandSpec* const>;

/// What help says of an operand.
std::string helpOf(const OperandSpec& operand);

}  // namespace tool::line
