// SPDX-License-Identifier: MIT
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tool/process/ExitCode.h"

namespace tool::line {

class Invocation;

/// Gives the words that a value may be, or that one would begin it with.
using Choices = std::vector<std::string> (*)();
/// The same where that depends on the operands before it.
using ChoicesAfter = std::vector<std::string> (*)(std::span<const std::string> operands);

// What values are called says what they are, to completion too: PACKAGE, FILE, FOLDER and DIR are
// on the disk, PATH is in the package that the line names.

/// An option, as it is parsed and described.
struct OptionSpec {
  std::string_view longName;        ///< without the dashes
  char shortName = 0;               ///< without the dash; 0 if it has none
  std::string_view valueName = {};  ///< how help calls its value; "" for a flag
  std::string_view help;            ///< one line
  bool isRepeatable = false;        ///< may be given several times
  bool isRequired = false;
  Choices choices = nullptr;  ///< null when it may be anything
};

struct OperandSpec {
  std::string_view name;
  std::string_view help;  ///< one line
  bool isRequired = true;
  bool isRepeatable = false;  ///< the last one only
  Choices choices = nullptr;  ///< null when it may be anything
  ChoicesAfter choicesAfter = nullptr;
  std::string_view hint = {};  ///< what helps when it is missing; may be empty
};

/// A line that one would type, and what it does in a few words.
struct ExampleSpec {
  std::string_view line;  ///< from "kraddon" on
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
  process::ExitCode failureCode =
      process::ExitCode::Failed;  ///< of whatever goes wrong but wrong usage
};

/// All commands of the program, in the order in which help lists them.
using CommandList = std::span<const CommandSpec* const>;

}  // namespace tool::line
