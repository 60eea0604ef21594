// SPDX-License-Identifier: MIT
#include <array>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "addon/build/FolderBuild.h"
#include "addon/build/Project.h"
#include "addon/build/Selection.h"
#include "addon/comparison/OtherContent.h"
#include "addon/comparison/PackageComparison.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/detail/PackageOpening.h"
#include "tool/commands/detail/SharedOptions.h"
#include "tool/line/Arguments.h"
#include "tool/process/Background.h"
#include "tool/process/Errors.h"
#include "tool/process/Interrupt.h"
#include "tool/process/PrivateFile.h"
#include "tool/report/DifferencePrinter.h"
#include "tool/report/Messages.h"
#include "tool/report/Output.h"
#include "tool/report/Progress.h"

namespace tool::commands {

using addon::build::buildInto;
using addon::build::manifestPath;
using addon::comparison::compareDescriptions;
using addon::comparison::ComparedPackage;
using addon::comparison::compareFiles;
using addon::comparison::compareOtherContent;
using addon::comparison::PackageDifferences;
using addon::comparison::readTree;

namespace {

constexpr std::array kOperands{
    line::OperandSpec{.name = "A", .help = "a package, or a folder with a manifest"},
    line::OperandSpec{.name = "B", .help = "the package or folder to compare it with"},
    line::OperandSpec{.name = "PATH",
                      .help = "compare only these files, or what is below these folders",
                      .isRequired = false,
                      .isRepeatable = true}};

constexpr std::array kOptions{
    detail::kJsonOption,
    line::OptionSpec{.longName = "stat", .help = "print how much differs, not what"},
    line::OptionSpec{
        .longName = "text",
        .help = "also print the changed lines of text files, as input for 'patch -p1'"},
    detail::kGlobOption};

constexpr std::array kExamples{
    line::ExampleSpec{"kraddon diff wave-1.1.kraddon wave-1.2.kraddon",
                      "what a new version changes"},
    line::ExampleSpec{"kraddon diff wave-1.2.kraddon . --text",
                      "how the project differs from the released package, line by line"},
    line::ExampleSpec{"kraddon diff a.kraddon b.kraddon --glob '*.m' '!tests/**'",
                      "only the sources, without the tests"}};

constexpr const char* kDescription =
    "Prints one line for each property, field of a document, file and empty folder that differs: + "
    "added, - removed, ~ changed, > moved. Files are compared by their content; times, the "
    "executable bit and compression are ignored, so packages with the same digest (see 'kraddon "
    "info') are the same. Other parts and relationships are compared, too, including those of "
    "packages that are not add-ons; the names of such parts begin with a slash. A folder is "
    "compared as the package that 'kraddon build' would build from it. With PATH, only files are "
    "compared.\n"
    "\n"
    "The exit code is 0 if nothing differs, 1 if "
    "something does, and 2 on failure.";

bool isFolder(const std::string& path) {
  std::error_code error;  // opening it will report the error
  return std::filesystem::is_directory(path, error);
}

/// A package to compare and, for a folder, the package built from it.
struct OpenedPackage : ComparedPackage {
  std::unique_ptr<process::PrivateFile> built = {};
};

/// `others` are files to leave out of a project that contains them.
OpenedPackage openCompared(const std::string& path, const std::vector<std::string>& others) {
  OpenedPackage compared{{path}};
  if (isFolder(path)) {
    compared.built = std::make_unique<process::PrivateFile>("built.kraddon");
    try {
      buildInto(path, compared.built->path(),
                {others, process::secondThread(), process::Interrupt::check});
    } catch (const addon::project::ManifestError& error) {
      throw process::Failure(error.in(manifestPath(path)));
    }
  }
  compared.package = detail::openForReading(compared.built ? compared.built->path() : path);
  compared.items = readTree(*compared.package);
  return compared;
}

void warn(const ComparedPackage& compared, const line::Invocation& invocation) {
  if (!addon::comparison::isAddon(*compared.package)) {
    report::printWarning(invocation,
                         process::sentence("package", compared.name,
                                           "it is not an add-on; all of its parts are compared"));
  }
  for (const auto& file : compared.package->fileSystem().unreadable()) {
    report::printWarning(invocation, file.line);
  }
}

PackageDifferences compare(ComparedPackage& a, ComparedPackage& b,
                           const std::vector<std::string>& paths,
                           const line::Invocation& invocation) {
  PackageDifferences differences;
  addon::build::chooseInBoth(a.items, b.items, paths, invocation.has("glob"));
  if (paths.empty()) {
    compareDescriptions(a, b, differences);
    compareOtherContent(a, b, differences);
  }
  report::ProgressBar bar(invocation.settings());
  differences.files = compareFiles({*a.package, a.items}, {*b.package, b.items},
                                   invocation.has("json"), bar.function());
  return differences;
}

void print(const report::ComparisonReport& report, const line::Invocation& invocation) {
  report::Output output;
  if (invocation.has("json")) {
    report::writeDifferencesAsJson(report, output.sink());
  } else if (invocation.has("stat")) {
    report::printDifferenceCounts(report, output);
  } else {
    report::printDifferences(report, invocation.has("text"),
                             report::wantsColor(invocation.settings(), output), output);
  }
  output.flush();
}

process::ExitCode run(const line::Invocation& invocation) {
  invocation.refuseTogether("stat", "json");
  invocation.refuseTogether("text", "json");
  invocation.refuseTogether("text", "stat");
  const std::vector<std::string>& operands = invocation.operands();
  const std::vector<std::string> paths(operands.begin() + 2, operands.end());

  OpenedPackage a = openCompared(operands[0], {operands[1]});
  OpenedPackage b = openCompared(operands[1], {a.built ? a.built->path() : operands[0]});
  const PackageDifferences differences = compare(a, b, paths, invocation);
  print({a, b, differences, !paths.empty()}, invocation);
  warn(a, invocation);
  warn(b, invocation);
  return differences.isSame() ? process::ExitCode::Done : process::ExitCode::Different;
}

}  // namespace

constexpr line::CommandSpec kDiffCommand{
    .name = "diff",
    .summary = "compares two packages, or a package and a folder",
    .description = kDescription,
    .operands = kOperands,
    .options = kOptions,
    .run = run,
    .examples = kExamples,
    .failureCode = process::ExitCode::Trouble};

}  // namespace tool::commands
