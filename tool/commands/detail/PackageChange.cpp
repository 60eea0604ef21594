// SPDX-License-Identifier: MIT
#include "tool/commands/detail/PackageChange.h"

#include <memory>
#include <optional>
#include <utility>

#include "addon/checks/ChangeReview.h"
#include "opc/FileIdentity.h"
#include "opc/signatures/ChangeWatch.h"
#include "tool/commands/detail/FindingMessages.h"
#include "tool/commands/detail/Locks.h"
#include "tool/commands/detail/PackageOpening.h"
#include "tool/commands/detail/SharedOptions.h"
#include "tool/process/Errors.h"
#include "tool/process/Interrupt.h"
#include "tool/report/Messages.h"
#include "tool/report/Progress.h"

namespace tool::commands::detail {

using addon::checks::ChangeReview;
using addon::checks::PackageVerdict;
using opc::signatures::ChangeWatch;

namespace {

/// The items that any change to the package will lose.
std::string describeLosses(const opc::model::Package& package, const line::Invocation& invocation) {
  std::string text;
  for (const std::string& item : package.strayItems()) {
    text += report::describeWarning(
        invocation,
        process::sentence("item", item, "it is not a part of the package and was left out"));
  }
  return text;
}

/// Changes the package, and returns the findings that the change brings about.
PackageVerdict changeAndReview(AddonPackage& package, const std::string& path,
                               const std::function<void(AddonPackage&)>& change,
                               const ReviewRules& rules, const line::Invocation& invocation) {
  if (rules.kind == ReviewRules::Kind::None) {
    change(package);
    return {};
  }
  ChangeReview review(package);
  change(package);
  if (rules.replaced != nullptr) review.replaces(*rules.replaced);
  PackageVerdict verdict = review.judge(path);
  if (rules.kind == ReviewRules::Kind::RefuseErrors) {
    refuseErrors("cannot change", verdict, "--no-verify makes the change anyway", invocation);
  }
  return verdict;
}

/// Commits. After that, interrupts are ignored, since the new package is in place.
void commit(AddonPackage& package) {
  package.logicalPackage().close(false);
  process::Interrupt::ignoreFromNowOn();
}

}  // namespace

ReviewRules strictReviewOf(const line::Invocation& invocation) {
  using Kind = ReviewRules::Kind;
  return {invocation.has(kNoVerifyOption.longName) ? Kind::None : Kind::RefuseErrors};
}

void changePackage(const std::string& path, opc::zippackage::WriteOptions options,
                   const line::Invocation& invocation,
                   const std::function<void(AddonPackage&)>& change, const ReviewRules& rules) {
  const process::PackageLock lock = lockPackage(path, invocation);
  const std::unique_ptr<AddonPackage> package = openForChanging(path);
  opc::model::Package& logical = package->logicalPackage();
  std::string after = describeLosses(logical, invocation);
  std::optional<ChangeWatch> signatures;
  if (!rules.isAboutSignatures && !invocation.settings().isQuiet) signatures.emplace(logical);
  const PackageVerdict verdict = changeAndReview(*package, path, change, rules, invocation);
  if (signatures && signatures->hasBroken()) {
    after += report::describeWarning(
        invocation, process::sentence("package", path, "its signature is no longer valid"));
  }
  after += describeFindings(verdict, invocation);
  report::ProgressBar bar(invocation.settings());
  options.progress = bar.function();
  package->physicalPackage().setWriteOptions(std::move(options));
  const auto before = opc::identityOf(path);
  commit(*package);
  if (opc::identityOf(path) == before) return;  // nothing was changed, so nothing was written
  report::printToStandardError(after);
}

void rehearseChange(const std::string& path, const line::Invocation& invocation,
                    const std::function<void(AddonPackage&)>& change) {
  report::printToStandardError(describeFindings(
      changeAndReview(*openForChanging(path), path, change, {}, invocation), invocation));
}

}  // namespace tool::commands::detail
