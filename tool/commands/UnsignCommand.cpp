// SPDX-License-Identifier: MIT
#include <array>

#include "opc/signatures/SignatureParts.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/detail/PackageChange.h"
#include "tool/commands/detail/SharedOptions.h"
#include "tool/commands/detail/WriteOptions.h"
#include "tool/line/Arguments.h"

namespace tool::commands {

using addon::packaging::AddonPackage;

namespace {

constexpr std::array kOperands{detail::kPackageOperand};

constexpr std::array kOptions{detail::kTimestampOption, detail::kLevelOption,
                              detail::kLockTimeoutOption};

process::ExitCode run(const line::Invocation& invocation) {
  const auto remove = [](AddonPackage& package) {
    opc::signatures::removeSignatures(package.logicalPackage());
  };
  detail::changePackage(
      invocation.operands()[0], detail::writeOptionsOf(invocation), invocation, remove,
      {.kind = detail::ReviewRules::Kind::None, .replaced = nullptr, .isAboutSignatures = true});
  return process::ExitCode::Done;
}

constexpr std::array kExamples{
    line::ExampleSpec{"kraddon unsign kit.kraddon", "removes all signatures"},
    line::ExampleSpec{"kraddon unsign --lock-timeout 5 kit.kraddon",
                      "fails if another command changes the package for longer than 5 seconds"}};

}  // namespace

constexpr line::CommandSpec kUnsignCommand{
    .name = "unsign",
    .summary = "removes the signatures of a package",
    .description =
        "Removes all signatures, valid or not, with the parts that carry them. Nothing "
        "else is changed. A package without signatures is left as it is.",
    .operands = kOperands,
    .options = kOptions,
    .run = run,
    .examples = kExamples};

}  // namespace tool::commands
