// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <array>
#include <memory>
#include <string>

#include "addon/build/PackageBuild.h"
#include "opc/Text.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/detail/BuildReporter.h"
#include "tool/commands/detail/FindingOptions.h"
#include "tool/commands/detail/Locks.h"
#include "tool/commands/detail/SharedOptions.h"
#include "tool/commands/detail/WriteOptions.h"
#include "tool/line/Arguments.h"
#include "tool/process/Errors.h"
#include "tool/process/Interrupt.h"
#include "tool/report/Messages.h"

namespace tool::commands {

using addon::build::BuildRequest;
using addon::build::BuildResult;
using detail::BuildReporter;

namespace {

constexpr std::array kOperands{line::OperandSpec{
    .name = "FOLDER", .help = "the project folder (default: .)", .isRequired = false}};

constexpr std::array kOptions{
    line::OptionSpec{.longName = "output",
                     .shortName = 'o',
                     .valueName = "PACKAGE",
                     .help = "the file to create (default: NAME-VERSION.kraddon)"},
    line::OptionSpec{.longName = "force",
                     .help = "replace any existing file, not only this add-on's package"},
    detail::kExcludeOption,
    detail::kFollowOption,
    line::OptionSpec{.longName = "dry-run", .help = "list what would be packed, write nothing"},
    line::OptionSpec{.longName = "strict", .help = "treat warnings as errors"},
    detail::kIgnoreOption,
    detail::kErrorOption,
    detail::kWarnOption,
    line::OptionSpec{.longName = "no-verify", .help = "do not check the package"},
    detail::kFormatOption,
    detail::kJsonOption,
    detail::kTimestampOption,
    detail::kLevelOption,
    detail::kLockTimeoutOption};

std::string folderOf(const line::Invocation& invocation) {
  return invocation.operands().empty() ? "." : invocation.operands()[0];
}

BuildRequest requestOf(const line::Invocation& invocation) {
  invocation.refuseTogether("no-verify", "strict");
  BuildRequest request;
  request.folder = folderOf(invocation);
  request.output = invocation.value("output");
  if (request.output == "-") {
    throw process::UsageError(
        process::sentence("bad value of --output", "-", "a package is a file"));
  }
  request.options = detail::writeOptionsOf(invocation);
  if (invocation.has(detail::kLevelOption.longName)) request.level = request.options.level;
  request.rules = detail::ruleListsOf(invocation);
  request.isForced = invocation.has("force");
  request.followsOutside = invocation.has("follow");
  request.isStrict = invocation.has("strict");
  request.verifies = !invocation.has("no-verify");
  request.wantsDigest = invocation.has("json");
  request.excludes = invocation.values("exclude");
  request.stop = process::Interrupt::check;
  request.startProgress = [&invocation] { return detail::startProgressBar(invocation.settings()); };
  request.lock = [&invocation](const std::string& path) {
    return std::make_shared<process::PackageLock>(detail::lockPackage(path, invocation));
  };
  request.onObstacle = [&invocation](const std::string& why) {
    report::printWarning(invocation, why);
  };
  if (invocation.settings().isVerbose) {
    request.onLeftOut = [](const std::string& path, const std::string& why) {
      report::printToStandardError(fmt::format("left out: {} ({})\n", opc::printable(path), why));
    };
  }
  return request;
}

process::ExitCode run(const line::Invocation& invocation) {
  BuildReporter reporter(invocation, folderOf(invocation));
  reporter.run([&] {
    BuildRequest request = requestOf(invocation);
    request.onWritten = [&](const BuildResult& result) { reporter.print(result); };
    return request;
  });
  return process::ExitCode::Done;
}

constexpr std::array kExamples{
    line::ExampleSpec{"kraddon build", "builds the package of the project in this folder"},
    line::ExampleSpec{"kraddon build wave -o dist/wave.kraddon --timestamp 0",
                      "produces the same bytes each time"},
    line::ExampleSpec{"kraddon build --dry-run -v",
                      "lists what would be packed, and what would not"},
    line::ExampleSpec{"kraddon build --format github",
                      "annotates the lines of the manifest and the files of the project"},
    line::ExampleSpec{"kraddon build --strict --json", "for pipelines: warnings fail the build"}};

}  // namespace

constexpr line::CommandSpec kBuildCommand{
    .name = "build",
    .summary = "builds the package of a project from its kraddon.toml",
    .description =
        "Packs the files of FOLDER as its manifest, kraddon.toml, describes. Everything that the "
        "manifest names must exist. The package is checked as 'verify' does before it is put in "
        "place: errors stop the build, including secrets (KR509), and so do warnings "
        "with --strict. --ignore, --error and --warn add to the table [verify] of the manifest. "
        "Each finding names the line of the manifest, or the file of the project, that it comes "
        "from; --format github and sarif print them to standard output. "
        "With --no-verify, only the manifest and what it refers to are checked. --dry-run checks "
        "what can be checked without a package. An existing package of the same add-on is "
        "replaced, any other file only with --force. A file that git does not track is a warning "
        "(KR515). Files keep their modification times unless --timestamp, or SOURCE_DATE_EPOCH in "
        "the environment, sets another.",
    .operands = kOperands,
    .options = kOptions,
    .run = run,
    .examples = kExamples};

}  // namespace tool::commands
