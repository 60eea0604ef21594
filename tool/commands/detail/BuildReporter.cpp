// SPDX-License-Identifier: MIT
#include "tool/commands/detail/BuildReporter.h"

#include <memory>
#include <utility>

#include "addon/build/BuildError.h"
#include "addon/build/FindingPlaces.h"
#include "tool/commands/detail/FindingOptions.h"
#include "tool/commands/detail/SharedOptions.h"
#include "tool/process/Errors.h"
#include "tool/process/Interrupt.h"
#include "tool/report/FindingPrinter.h"
#include "tool/report/Messages.h"

namespace tool::commands::detail {

using addon::build::BuildError;
using addon::build::BuildFailure;
using addon::build::BuildRequest;
using addon::build::BuildResult;
using addon::build::ManifestError;
using addon::build::PackageBuild;
using addon::checks::PackageVerdict;

namespace {

constexpr const char* kText = "text";
constexpr const char* kSarif = "sarif";

}  // namespace

BuildReporter::BuildReporter(const line::Invocation& invocation, std::string folder)
    : invocation_(invocation),
      folder_(std::move(folder)),
      format_(invocation.valueOr(kFormatOption.longName, kText)) {
  invocation.refuseTogether(kJsonOption.longName, kFormatOption.longName);
  report::Output none;
  report::makePrinter(format_, false, none);  // refuses an unknown one
}

void BuildReporter::print(const BuildResult& result) {
  isPrinted_ = true;
  const bool isQuiet = invocation_.settings().isQuiet && !result.failure;
  const bool isText = format_ == kText;
  if (isText && result.verdict && !isQuiet) {
    report::printToStandardError(
        report::describeFindings(*result.verdict, report::wantsErrorColor(invocation_.settings())));
  }
  report::Output output;
  if (invocation_.has(kJsonOption.longName)) {
    report::writeBuildAsJson(result, output.sink());
  } else if (!isText) {
    printFindings(result, output);
  } else if (invocation_.has("dry-run")) {
    if (!result.file.empty()) report::printBuildPlan(result, output);
  } else if (result.isWritten && !isQuiet) {
    report::printBuilt(result, output);
  }
  output.flush();
}

void BuildReporter::printFindings(const BuildResult& result, report::Output& output) const {
  PackageVerdict verdict = result.verdict.value_or(PackageVerdict());
  // An annotation for each finding is enough; a log says in any case that nothing was built.
  if (result.failure && (!result.verdict || format_ == kSarif)) {
    verdict.failure = result.failure->message;
    verdict.failurePlace = result.failure->place;
  }
  const std::unique_ptr<report::FindingPrinter> printer =
      report::makePrinter(format_, false, output);
  printer->begin();
  printer->print(verdict);
  printer->end();
}

void BuildReporter::fail(BuildResult& result, const BuildFailure& failure) {
  if (isPrinted_) return;
  result.failure = failure;
  result.isWritten = false;
  result.size.reset();
  print(result);
}

void BuildReporter::build(const std::function<BuildRequest()>& request, BuildResult& result) {
  PackageBuild build(request());
  const bool isRehearsal = invocation_.has("dry-run");
  // Large texts may be kept in a file meanwhile.
  if (isRehearsal) process::Interrupt::defer();
  try {
    isRehearsal ? build.rehearse() : build.run();
  } catch (...) {
    // The findings of a build that failed are printed, too.
    result = std::move(build.result);
    throw;
  }
  if (isRehearsal) print(build.result);
  if (!isRehearsal) process::Interrupt::ignoreFromNowOn();
}

void BuildReporter::run(const std::function<BuildRequest()>& request) {
  BuildResult result;
  try {
    build(request, result);
  } catch (const process::UsageError&) {
    throw;
  } catch (const ManifestError& error) {
    const std::string path = addon::build::manifestPath(folder_);
    const std::string message = error.in(path);
    fail(result, {message, {}, addon::build::placeOf(error, path)});
    throw process::Failure(message);
  } catch (const BuildError& error) {
    fail(result, {error.what(), error.hint(), {}});
    throw;
  } catch (const process::Failure& error) {
    fail(result, {error.what(), error.hint(), {}});
    throw;
  } catch (const opc::Exception& error) {
    fail(result, {error.what(), {}, {}});
    throw;
  }
}

}  // namespace tool::commands::detail
