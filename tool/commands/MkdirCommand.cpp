// SPDX-License-Identifier: MIT
#include <array>
#include <string>
#include <utility>

#include "addon/build/Selection.h"
#include "addon/build/SourceFiles.h"
#include "text/Lines.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/detail/FileNames.h"
#include "tool/commands/detail/PackageChange.h"
#include "tool/commands/detail/SharedOptions.h"
#include "tool/commands/detail/WriteOptions.h"
#include "tool/line/Arguments.h"
#include "tool/process/Errors.h"

namespace tool::commands {

using addon::build::storeFolder;
using addon::packaging::AddonPackage;

namespace {

constexpr std::array kOperands{
    detail::kPackageOperand,
    line::OperandSpec{.name = "PATH", .help = "the folders to create", .isRepeatable = true}};

constexpr std::array kOptions{detail::kTimestampOption, detail::kLevelOption,
                              detail::kLockTimeoutOption};

process::ExitCode run(const line::Invocation& invocation) {
  const auto& operands = invocation.operands();
  auto options = detail::writeOptionsOf(invocation);
  for (auto path = operands.begin() + 1; path != operands.end(); ++path) {
    if (path->empty()) {
      throw process::Failure(
          process::sentence("cannot create the folder", *path, "the path is empty"));
    }
    detail::toUtf16("cannot create the folder", *path);
  }
  const auto make = [&](AddonPackage& package) {
    for (auto path = operands.begin() + 1; path != operands.end(); ++path) {
      const std::string_view trimmed = text::trimSlashes(*path);
      if (!trimmed.empty()) storeFolder(std::string(trimmed), package);
    }
  };
  detail::changePackage(operands[0], std::move(options), invocation, make);
  return process::ExitCode::Done;
}

constexpr std::array kExamples{
    line::ExampleSpec{"kraddon mkdir kit.kraddon results", "adds an empty folder"},
    line::ExampleSpec{"kraddon mkdir kit.kraddon cache/images cache/texts",
                      "adds two folders and the one above them"}};

}  // namespace

constexpr line::CommandSpec kMkdirCommand{
    .name = "mkdir",
    .summary = "adds empty folders",
    .description =
        "Missing parent folders are created. A folder that already exists is not an error.",
    .operands = kOperands,
    .options = kOptions,
    .run = run,
    .examples = kExamples};

}  // namespace tool::commands
