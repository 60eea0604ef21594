// SPDX-License-Identifier: MIT
#include <fmt/format.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include "addon/build/FindingPlaces.h"
#include "addon/build/FolderBuild.h"
#include "addon/build/Project.h"
#include "addon/build/RealPath.h"
#include "addon/build/TrackedFiles.h"
#include "addon/build/TreeWalk.h"
#include "addon/build/VerifyRules.h"
#include "addon/checks/AddonFindings.h"
#include "addon/checks/AddonVerification.h"
#include "addon/comparison/Digest.h"
#include "addon/project/Guid.h"
#include "opc/Text.h"
#include "text/ByteCount.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/detail/BuildReporter.h"
#include "tool/commands/detail/FindingOptions.h"
#include "tool/commands/detail/NewPackage.h"
#include "tool/commands/detail/PackageAccess.h"
#include "tool/commands/detail/SharedOptions.h"
#include "tool/line/Arguments.h"
#include "tool/process/Errors.h"
#include "tool/process/Interrupt.h"
#include "tool/report/BuildReport.h"
#include "tool/report/Messages.h"
#include "tool/report/Progress.h"

namespace tool::commands {

using addon::build::FileChoice;
using addon::build::fillPackage;
using addon::build::liesIn;
using addon::build::manifestPath;
using addon::build::openProject;
using addon::build::Project;
using addon::build::propertiesOf;
using addon::build::realPath;
using addon::build::TrackedFiles;
using addon::checks::checkAddon;
using addon::checks::FindingRules;
using addon::checks::kSecret;
using addon::checks::kUntracked;
using addon::checks::PackageVerdict;
using addon::checks::RuleLists;
using addon::checks::verifyAddon;
using addon::comparison::contentDigest;
using addon::comparison::Item;
using addon::comparison::readTree;
using addon::packaging::AddonPackage;

namespace {

using addon::packaging::AddonProperties;
using detail::BuildReporter;
using detail::Replacing;
using opc::checks::Finding;
using opc::checks::Report;
using opc::checks::Severity;
using opc::zippackage::WriteOptions;

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

/// Everything that is determined before the work begins.
struct Task {
  const line::Invocation& invocation;
  Project project;
  FindingRules rules;
  std::string output;
  WriteOptions options;

  bool verifies() const { return !invocation.has("no-verify"); }
  bool isForced() const { return invocation.has("force"); }
  bool isStrict() const { return invocation.has("strict") || project.manifest.verify.strict.value; }
};

/// The checks refused the package.
struct Refused {};

std::string folderOf(const line::Invocation& invocation) {
  return invocation.operands().empty() ? "." : invocation.operands()[0];
}

bool isOfProject(const std::string& output, const Project& project) {
  const std::string path = realPath(output);
  return liesIn(path, realPath(project.folder)) ||
         liesIn(path, realPath(project.onDisk(project.manifest.files.root.value)));
}

/// Empty files, and what is not a regular file, are handled elsewhere.
bool mayBePackage(const std::string& path) {
  if (path.ends_with(addon::packaging::kPackageExtension)) return true;
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return true;
  std::array<char, 2> begin{};
  std::ifstream file(path, std::ios::binary);
  file.read(begin.data(), begin.size());
  return begin == std::array{'P', 'K'} || (file.eof() && file.gcount() == 0);
}

/// They may be the only copy of the author's work; --force is intended for older packages.
void refuseSources(const std::string& output, const Project& project, bool isForced) {
  const std::optional<opc::FileIdentity> existing = opc::identityOf(output);
  if (existing && existing == opc::identityOf(manifestPath(project.folder))) {
    throw process::Failure(
        process::sentence("cannot create", output, "it is the manifest of the project"));
  }
  if (existing && isForced && isOfProject(output, project) && !mayBePackage(output)) {
    throw process::Failure(
        process::sentence("cannot create", output, "it is a file of the project, not a package"));
  }
}

Task prepare(const line::Invocation& invocation) {
  invocation.refuseTogether("no-verify", "strict");
  const std::optional<std::string> asked = invocation.value("output");
  if (asked == "-") {
    throw process::UsageError(
        process::sentence("bad value of --output", "-", "a package is a file"));
  }
  WriteOptions options = detail::writeOptionsOf(invocation);
  RuleLists lists = detail::ruleListsOf(invocation);
  Project project = openProject(folderOf(invocation));
  if (!invocation.has(detail::kLevelOption.longName))
    options.level = project.manifest.build.level.value;
  lists.append(addon::build::ruleListsOf(project.manifest.verify));
  // A published secret cannot be withdrawn.
  FindingRules rules(lists, {kSecret});
  std::string output = asked ? *asked : addon::project::outputPath(project.manifest);
  refuseSources(output, project, invocation.has("force"));
  return {invocation, std::move(project), std::move(rules), std::move(output), std::move(options)};
}

FileChoice choiceOf(const Task& task) {
  FileChoice choice;
  choice.excludes = task.invocation.values("exclude");
  choice.followsOutside = task.invocation.has("follow");
  choice.leftOut = {task.output};
  choice.stop = process::Interrupt::check;
  if (task.invocation.settings().isVerbose) {
    choice.onLeftOut = [](const std::string& path, const std::string& why) {
      report::printToStandardError(fmt::format("left out: {} ({})\n", opc::printable(path), why));
    };
  }
  return choice;
}

void reportUntracked(const TrackedFiles& tracked, const report::BuildResult& result,
                     Report& report) {
  for (const report::BuildEntry& entry : result.entries) {
    if (!entry.size || !tracked.lacks(entry.path)) continue;
    report.add(kUntracked, entry.path, "git does not track the file");
  }
}

/// The findings with their places in the project.
PackageVerdict judge(const Task& task, const Report& report) {
  PackageVerdict verdict = addon::checks::judge(task.output, report, task.rules);
  addon::build::locateFindings(task.project, verdict);
  return verdict;
}

/// Checks the package before it is put in place.
void inspect(const std::string& path, const Task& task, const TrackedFiles& tracked,
             report::BuildResult& result) {
  process::Interrupt::check();
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) throw process::systemFailure("cannot access", path, errno);
  result.size = static_cast<std::uint64_t>(info.st_size);
  report::ProgressBar bar(task.invocation.settings());
  if (task.verifies()) {
    Report report = verifyAddon(path, bar.function());
    reportUntracked(tracked, result, report);
    result.verdict = judge(task, report);
    if (!result.verdict->isGood(task.isStrict())) throw Refused();
  }
  if (task.invocation.has("json")) {
    const auto package = detail::openForReading(path);
    result.digest = contentDigest(*package, readTree(*package), bar.function());
  }
}

/// Checks what can be checked without a file: not the container.
report::BuildResult rehearse(const Task& task) {
  process::Interrupt::defer();  // a large screenshot is kept in a file
  detail::requireFreePlace(task.output, {.any = true});
  AddonProperties properties = propertiesOf(task.project);
  AddonPackage package(opc::SystemPath{task.output}, properties);
  fillPackage(task.project, choiceOf(task), task.rules, package);
  const std::vector<Item> items = readTree(package);
  report::BuildResult result = report::resultFor(task.output, items);
  if (task.verifies()) {
    Report report;
    checkAddon(package, report);
    reportUntracked(TrackedFiles(task.project), result, report);
    result.verdict = judge(task, report);
  }
  if (task.invocation.has("json")) {
    report::ProgressBar bar(task.invocation.settings());
    result.digest = contentDigest(package, items, bar.function());
  }
  return result;
}

/// The add-on's own package, of an earlier build, may be replaced.
Replacing replacingOf(const Task& task, const AddonProperties& properties) {
  return {.any = task.isForced(), .guid = addon::project::plainGuid(properties.GUID)};
}

void warnOfExisting(const Task& task) {
  try {
    detail::requireFreePlace(task.output, replacingOf(task, propertiesOf(task.project)));
  } catch (const process::Failure& failure) {
    report::printWarning(task.invocation, failure.what());
  }
}

/// What to do about what stops the build.
std::string hintOf(const PackageVerdict& verdict) {
  for (const Finding& finding : verdict.findings) {
    if (finding.id.number != kSecret.number || finding.id.severity != Severity::Error) continue;
    return fmt::format(
        "if the secret is meant to be public, ignore = [\"{}:{}\"] under [verify] in the manifest "
        "allows it",
        opc::checks::idOf(kSecret.number), finding.part);
  }
  return "'kraddon verify --explain ID' explains a finding";
}

[[noreturn]] void refuse(const PackageVerdict& verdict, const Task& task) {
  const std::string why =
      verdict.errors != 0
          ? "it has " + text::counted(verdict.errors, "error")
          : "it has " + text::counted(verdict.warnings, "warning") + ", and 'strict' is set";
  throw process::Failure(process::sentence("cannot build", task.output, why), hintOf(verdict));
}

/// Reports the result before the package is put in place, so that the old one stays if that fails.
void build(Task& task, BuildReporter& reporter) {
  AddonProperties properties = propertiesOf(task.project);
  detail::NewPackage target(task.output, replacingOf(task, properties), task.invocation);
  AddonPackage& package = target.open(properties, task.options.timestamp);
  fillPackage(task.project, choiceOf(task), task.rules, package);
  reporter.result = report::resultFor(task.output, readTree(package));
  const TrackedFiles tracked(task.project);
  task.options.inspect = [&](const std::string& path) {
    inspect(path, task, tracked, reporter.result);
    reporter.result.isWritten = true;
    reporter.print();
  };
  try {
    target.commit(std::move(task.options), task.invocation.settings());
  } catch (const Refused&) {
    refuse(*reporter.result.verdict, task);
  }
}

void dryRun(const Task& task, BuildReporter& reporter) {
  warnOfExisting(task);
  reporter.result = rehearse(task);
  const auto& verdict = reporter.result.verdict;
  if (verdict && !verdict->isGood(task.isStrict())) refuse(*verdict, task);
  reporter.print();
}

process::ExitCode run(const line::Invocation& invocation) {
  BuildReporter reporter(invocation, folderOf(invocation));
  reporter.run([&] {
    Task task = prepare(invocation);
    invocation.has("dry-run") ? dryRun(task, reporter) : build(task, reporter);
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
        "place: errors, to which secrets (KR509) belong here, stop the build, and so do warnings "
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
