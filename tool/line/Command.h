// SPDX-License-Identifier: MIT
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tool/process/ExitCode.h"

namespace tool {

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
  ExitCode (*run)(const Invocation& invocation) = nullptr;
  std::span<const ExampleSpec> examples = {};
  ExitCode failureCode = ExitCode::Failed;  ///< of whatever goes wrong but wrong usage
};

// The commands, each described where it is implemented.
extern const CommandSpec kAddCommand;
extern const CommandSpec kBuildCommand;
extern const CommandSpec kCallCommand;
extern const CommandSpec kCompletionCommand;
extern const CommandSpec kCreateCommand;
extern const CommandSpec kDiffCommand;
extern const CommandSpec kExtractCommand;
extern const CommandSpec kGetCommand;
extern const CommandSpec kHelpCommand;
extern const CommandSpec kInfoCommand;
extern const CommandSpec kInitCommand;
extern const CommandSpec kListCommand;
extern const CommandSpec kMkdirCommand;
extern const CommandSpec kPreviewCommand;
extern const CommandSpec kRemoveCommand;
extern const CommandSpec kSchemaCommand;
extern const CommandSpec kScreenshotCommand;
extern const CommandSpec kSetCommand;
extern const CommandSpec kUnsetCommand;
extern const CommandSpec kVerifyCommand;

/// The names of the metadata documents.
std::vector<std::string> documentNames();

// Operands and options that several commands share.
inline constexpr OperandSpec kDocumentOperand{
    .name = "DOCUMENT",
    .help = "properties, license, configuration, apps, examples, revisions or requirements",
    .choices = documentNames};
inline constexpr OptionSpec kDefaultExcludesOption{
    .longName = "default-excludes", .help = "leave out files of version control and editors"};
inline constexpr OptionSpec kDryRunOption{.longName = "dry-run",
                                          .help = "print what would be done, change nothing"};
inline constexpr OptionSpec kExcludeOption{.longName = "exclude",
                                           .valueName = "GLOB",
                                           .help = "leave out what matches, as in gitignore",
                                           .isRepeatable = true};
inline constexpr OptionSpec kFollowOption{.longName = "follow",
                                          .help = "follow links that lead out of FOLDER"};
inline constexpr OptionSpec kJsonOption{.longName = "json", .help = "print one JSON value"};
inline constexpr OptionSpec kGlobOption{.longName = "glob", .help = "take each PATH as a pattern"};
inline constexpr OptionSpec kTimestampOption{
    .longName = "timestamp",
    .valueName = "SECONDS",
    .help = "time of everything written, in seconds since 1970"};
inline constexpr OptionSpec kLevelOption{
    .longName = "level", .valueName = "0..9", .help = "how hard to pack; 0 stores, default 6"};

}  // namespace tool
