// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <array>
#include <cerrno>
#include <string>

#include "addon/checks/AddonVerification.h"
#include "addon/checks/Catalogue.h"
#include "addon/checks/FindingRules.h"
#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/checks/PackageVerification.h"
#include "text/ByteCount.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/detail/PackageAccess.h"
#include "tool/commands/detail/SharedOptions.h"
#include "tool/line/Arguments.h"
#include "tool/process/Errors.h"
#include "tool/report/FindingPrinter.h"
#include "tool/report/Messages.h"
#include "tool/report/Output.h"
#include "tool/report/Progress.h"

namespace tool::commands {

using addon::checks::findingNamed;
using addon::checks::groupOf;
using addon::checks::IgnoreRules;
using addon::checks::judge;
using addon::checks::PackageVerdict;
using addon::checks::verifyAddon;

namespace {

using opc::checks::FindingInfo;

/// verifyPackage() or verifyAddon().
using Verify = decltype(verifyAddon);

constexpr std::array kOperands{line::OperandSpec{
    .name = "PACKAGE", .help = "the packages to check", .isRequired = false, .isRepeatable = true}};

constexpr std::array kOptions{
    line::OptionSpec{.longName = "strict", .help = "treat warnings as errors"},
    line::OptionSpec{.longName = "ignore",
                     .valueName = "ID[:GLOB]",
                     .help = "ignore a finding, everywhere or for paths that match",
                     .isRepeatable = true,
                     .choices = addon::checks::findingIds},
    line::OptionSpec{.longName = "opc",
                     .help = "check only the container and the packaging conventions"},
    line::OptionSpec{.longName = "format",
                     .valueName = "FORMAT",
                     .help = "the output format: text, github or sarif",
                     .choices = report::findingFormats},
    detail::kJsonOption,
    line::OptionSpec{.longName = "explain",
                     .valueName = "ID",
                     .help = "explain a finding and what to do about it",
                     .choices = addon::checks::findingIds}};

constexpr const char* kDescription =
    "Reads every byte, and checks every checksum, every rule of the packaging conventions, every "
    "document, and every reference between them. Prints one line per finding. The exit code is 1 "
    "if there is an error in any of the packages.";

void explain(const FindingInfo& info, report::Output& output) {
  output.write(fmt::format("{}: {}\nseverity: {}\ngroup: {}\n\n{}\n\n{}\n",
                           opc::checks::idOf(info.id.number), info.title,
                           opc::checks::nameOf(info.id.severity), groupOf(info.id),
                           info.explanation, info.remedy));
}

/// The result of `read` for an option. A value that it refuses is a usage error.
template <typename Read>
decltype(auto) given(const Read& read) {
  try {
    return read();
  } catch (const opc::Exception& error) {
    throw process::UsageError(error.what());
  }
}

process::ExitCode runExplain(const line::Invocation& invocation) {
  invocation.refuseTogether("explain", "json");
  invocation.refuseTogether("explain", "format");
  if (!invocation.operands().empty()) {
    throw process::UsageError(process::sentence("unexpected operand", invocation.operands()[0],
                                                "--explain takes no package"));
  }
  report::Output output;
  explain(given([&]() -> auto& { return findingNamed(*invocation.value("explain")); }), output);
  output.flush();
  return process::ExitCode::Done;
}

/// Does not throw if a file is bad, since the others must be checked too.
PackageVerdict verify(const std::string& path, Verify& check, const IgnoreRules& rules,
                      const line::Settings& settings) {
  PackageVerdict failed;
  failed.file = path;
  try {
    if (path.empty()) throw process::systemFailure("cannot open package", path, ENOENT);
    report::ProgressBar bar(settings);
    return judge(path, check(path, bar.function()), rules);
  } catch (const opc::Exception& error) {
    failed.failure = error.what();
  } catch (const process::Failure& error) {
    failed.failure = opc::printable(error.what());
    failed.file = opc::printable(path);
  }
  return failed;
}

void printSummary(const PackageVerdict& verdict, const line::Settings& settings) {
  if (!verdict.failure.empty()) return report::printError("verify", verdict.failure);
  const bool isClean = verdict.errors + verdict.warnings + verdict.ignored == 0;
  if (settings.isQuiet || (isClean && !settings.isVerbose)) return;
  const std::string ignored =
      verdict.ignored == 0 ? "" : fmt::format(", {} ignored", verdict.ignored);
  report::printToStandardError(fmt::format("{}: {}, {}{}\n", opc::printable(verdict.file),
                                           text::counted(verdict.errors, "error"),
                                           text::counted(verdict.warnings, "warning"), ignored));
}

process::ExitCode runChecks(const line::Invocation& invocation) {
  if (invocation.operands().empty()) {
    throw process::UsageError(
        process::sentence("missing operand", kOperands[0].name, kOperands[0].help));
  }
  invocation.refuseTogether("json", "format");
  const IgnoreRules rules = given([&] { return IgnoreRules(invocation.values("ignore")); });
  Verify& check = invocation.has("opc") ? opc::checks::verifyPackage : verifyAddon;
  const bool isStrict = invocation.has("strict");
  const std::string format = invocation.has("json") ? "json" : invocation.valueOr("format", "text");
  report::Output output;
  const std::unique_ptr<report::FindingPrinter> printer =
      report::makePrinter(format, isStrict, output);

  bool isGood = true;
  printer->begin();
  for (const std::string& path : invocation.operands()) {
    const PackageVerdict verdict = verify(path, check, rules, invocation.settings());
    printer->print(verdict);
    output.flush();  // before what goes to standard error
    printSummary(verdict, invocation.settings());
    isGood = isGood && verdict.isGood(isStrict);
  }
  printer->end();
  output.flush();
  return isGood ? process::ExitCode::Done : process::ExitCode::Failed;
}

process::ExitCode run(const line::Invocation& invocation) {
  return invocation.has("explain") ? runExplain(invocation) : runChecks(invocation);
}

constexpr std::array kExamples{
    line::ExampleSpec{"kraddon verify kit.kraddon", "prints one line per finding"},
    line::ExampleSpec{"kraddon verify --strict --ignore 'KR512:docs/**' *.kraddon",
                      "also fails on warnings, except for some"},
    line::ExampleSpec{"kraddon verify --opc --json report.docx",
                      "checks any package that follows the conventions"},
    line::ExampleSpec{"kraddon verify --explain KR101", "explains a finding"}};

}  // namespace

constexpr line::CommandSpec kVerifyCommand{.name = "verify",
                                           .summary = "checks packages and reports what is wrong",
                                           .description = kDescription,
                                           .operands = kOperands,
                                           .options = kOptions,
                                           .run = run,
                                           .examples = kExamples};

}  // namespace tool::commands
