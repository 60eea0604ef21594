// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <array>
#include <string>

#include "addon/build/VerifyRules.h"
#include "addon/checks/AddonVerification.h"
#include "addon/checks/Catalogue.h"
#include "addon/checks/FindingRules.h"
#include "opc/Text.h"
#include "opc/checks/PackageVerification.h"
#include "text/ByteCount.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/detail/FindingOptions.h"
#include "tool/commands/detail/SharedOptions.h"
#include "tool/commands/detail/TrustAnchors.h"
#include "tool/commands/detail/Verdicts.h"
#include "tool/line/Arguments.h"
#include "tool/process/Errors.h"
#include "tool/report/FindingPrinter.h"
#include "tool/report/Messages.h"
#include "tool/report/Output.h"

namespace tool::commands {

using addon::build::Rules;
using addon::checks::findingNamed;
using addon::checks::groupOf;
using addon::checks::PackageVerdict;
using addon::checks::verifyAddon;
using opc::checks::SignatureDemands;

namespace {

using opc::checks::FindingInfo;

constexpr std::array kOperands{line::OperandSpec{
    .name = "PACKAGE", .help = "the packages to check", .isRequired = false, .isRepeatable = true}};

constexpr std::array kOptions{
    line::OptionSpec{.longName = "strict", .help = "treat warnings as errors"},
    detail::kIgnoreOption,
    detail::kErrorOption,
    detail::kWarnOption,
    line::OptionSpec{.longName = "manifest",
                     .valueName = "FOLDER",
                     .help = "apply the table [verify] of the manifest in FOLDER"},
    line::OptionSpec{.longName = "policy",
                     .valueName = "FILE",
                     .help = "apply the table [verify] of FILE, in TOML"},
    detail::kTrustOption,
    line::OptionSpec{.longName = "require-signature",
                     .help = "treat a package without signature as an error"},
    line::OptionSpec{.longName = "opc",
                     .help = "check only the container and the packaging conventions"},
    detail::kFormatOption,
    detail::kJsonOption,
    line::OptionSpec{.longName = "explain",
                     .valueName = "ID",
                     .help = "explain a finding and what to do about it",
                     .choices = addon::checks::findingIds}};

constexpr const char* kDescription =
    "Reads every byte, and checks every checksum, every rule of the packaging conventions, every "
    "document, and every reference between them. Prints one line per finding. The exit code is 1 "
    "if there is an error in any of the packages. What counts as an error can be chosen by the ids "
    "of "
    "the findings: with options, with the table [verify] of the add-on's manifest, or with a "
    "policy, "
    "a file with that table alone. --ignore takes precedence over --error, and --error over "
    "--warn.\n"
    "\n"
    "Signatures are checked if there are any. With --trust, the chain of every signer's "
    "certificate "
    "has to reach one of the given certificates, a root or an intermediate.";

void explain(const FindingInfo& info, report::Output& output) {
  output.write(fmt::format("{}: {}\nseverity: {}\ngroup: {}\n\n{}\n\n{}\n",
                           opc::checks::idOf(info.id.number), info.title,
                           opc::checks::nameOf(info.id.severity), groupOf(info.id),
                           info.explanation, info.remedy));
}

process::ExitCode runExplain(const line::Invocation& invocation) {
  invocation.refuseTogether("explain", "json");
  invocation.refuseTogether("explain", "format");
  if (!invocation.operands().empty()) {
    throw process::UsageError(process::sentence("unexpected operand", invocation.operands()[0],
                                                "--explain takes no package"));
  }
  report::Output output;
  explain(detail::given([&]() -> auto& { return findingNamed(*invocation.value("explain")); }),
          output);
  output.flush();
  return process::ExitCode::Done;
}

/// The options add to what the tables [verify] say.
Rules rulesOf(const line::Invocation& invocation) {
  return addon::build::rulesOf({detail::ruleListsOf(invocation), invocation.has("strict"),
                                invocation.value("manifest"), invocation.value("policy")});
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

/// What several packages come to.
class Total {
 public:
  void add(const PackageVerdict& verdict, bool isStrict) {
    ++packages_;
    if (!verdict.failure.empty()) ++unread_;
    if (verdict.errors != 0) {
      ++withErrors_;
    } else if (isStrict && verdict.warnings != 0) {
      ++withWarnings_;
    }
    errors_ += verdict.errors;
    warnings_ += verdict.warnings;
    ignored_ += verdict.ignored;
  }

  bool isOfSeveral() const { return packages_ > 1; }

  /// "total: 3 packages, 1 with errors: 2 errors, 4 warnings"
  std::string text() const {
    const auto when = [](std::size_t count, std::string_view what) {
      return count == 0 ? std::string() : fmt::format(", {} {}", count, what);
    };
    return fmt::format("total: {}{}{}{}: {}, {}{}\n", text::counted(packages_, "package"),
                       when(withErrors_, "with errors"), when(withWarnings_, "with warnings"),
                       when(unread_, "not read"), text::counted(errors_, "error"),
                       text::counted(warnings_, "warning"), when(ignored_, "ignored"));
  }

 private:
  std::size_t packages_ = 0;
  std::size_t unread_ = 0;
  std::size_t withErrors_ = 0;
  std::size_t withWarnings_ = 0;
  std::size_t errors_ = 0;
  std::size_t warnings_ = 0;
  std::size_t ignored_ = 0;
};

process::ExitCode runChecks(const line::Invocation& invocation) {
  if (invocation.operands().empty()) {
    throw process::UsageError(
        process::sentence("missing operand", kOperands[0].name, kOperands[0].help));
  }
  invocation.refuseTogether("json", "format");
  const Rules rules = rulesOf(invocation);
  auto& check = invocation.has("opc") ? opc::checks::verifyPackage : verifyAddon;
  const auto anchors = detail::trustAnchorsOf(invocation);
  const SignatureDemands demands{anchors.get(), invocation.has("require-signature")};
  const std::string format = invocation.has("json") ? "json" : invocation.valueOr("format", "text");
  const detail::VerdictRequest request{check, invocation.operands(), demands, rules.rules,
                                       invocation.settings()};
  report::Output output;
  const std::unique_ptr<report::FindingPrinter> printer = report::makePrinter(
      format, rules.isStrict, output, report::wantsColor(invocation.settings(), output));

  bool isGood = true;
  Total total;
  detail::Verdicts verdicts(request);
  printer->begin();
  for (std::size_t i = 0; i < request.paths.size(); ++i) {
    const PackageVerdict verdict = verdicts.take();
    printer->print(verdict);
    output.flush();  // before what goes to standard error
    printSummary(verdict, invocation.settings());
    isGood = isGood && verdict.isGood(rules.isStrict);
    total.add(verdict, rules.isStrict);
  }
  printer->end();
  output.flush();
  if (total.isOfSeveral() && !invocation.settings().isQuiet) {
    report::printToStandardError(total.text());
  }
  return isGood ? process::ExitCode::Done : process::ExitCode::Failed;
}

process::ExitCode run(const line::Invocation& invocation) {
  return invocation.has("explain") ? runExplain(invocation) : runChecks(invocation);
}

constexpr std::array kExamples{
    line::ExampleSpec{"kraddon verify kit.kraddon", "prints one line per finding"},
    line::ExampleSpec{"kraddon verify --strict --ignore 'KR512:docs/**' *.kraddon",
                      "also fails on warnings, except for some"},
    line::ExampleSpec{"kraddon verify --policy gallery.toml *.kraddon",
                      "applies the rules of a gallery"},
    line::ExampleSpec{"kraddon verify --require-signature --trust maker.pem kit.kraddon",
                      "also fails unless every signer is trusted"},
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
