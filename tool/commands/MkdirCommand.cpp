// SPDX-License-Identifier: MIT
#include <array>
#include <string>
#include <utility>

#include "tool/line/Arguments.h"
#include "tool/process/Errors.h"
#include "tool/commands/detail/PackageAccess.h"
#include "tool/commands/detail/Selection.h"
#include "tool/SourceFiles.h"

namespace tool {

namespace {

constexpr std::array kOperands{
    OperandSpec{.name = "PACKAGE", .help = "the package"},
    OperandSpec{.name = "PATH", .help = "the folders to make", .isRepeatable = true}};

constexpr std::array kOptions{kTimestampOption, kLevelOption};

ExitCode run(const Invocation& invocation) {
  const auto& operands = invocation.operands();
  auto options = writeOptionsOf(invocation);
  for (auto path = operands.begin() + 1; path != operands.end(); ++path) {
    if (path->empty()) {
      throw Failure(sentence("cannot make the folder", *path, "the path is empty"));
    }
    toUtf16("cannot make the folder", *path);
  }
  const auto make = [&](AddonPackage& package) {
    for (auto path = operands.begin() + 1; path != operands.end(); ++path) {
      const std::string_view trimmed = trimSlashes(*path);
      if (!trimmed.empty()) storeFolder(std::string(trimmed), package);
    }
  };
  changePackage(operands[0], std::move(options), invocation, make);
  return ExitCode::Done;
}

constexpr std::array kExamples{
    ExampleSpec{"kraddon mkdir kit.kraddon results", "adds an empty folder"},
    ExampleSpec{"kraddon mkdir kit.kraddon cache/images cache/texts",
                "adds two, and the one above them"}};

}  // namespace

constexpr CommandSpec kMkdirCommand{
    .name = "mkdir",
    .summary = "adds empty folders",
    .description = "Folders above them come into being. A folder that exists is no error.",
    .operands = kOperands,
    .options = kOptions,
    .run = run,
    .examples = kExamples};

}  // namespace tool
