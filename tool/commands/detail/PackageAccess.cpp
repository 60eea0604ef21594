// SPDX-License-Identifier: MIT
#include "tool/commands/detail/PackageAccess.h"
#include "tool/commands/detail/SharedOptions.h"

#include <fmt/format.h>

#include <boost/date_time/posix_time/posix_time.hpp>
#include <cstdlib>
#include <utility>

#include "addon/build/TreeWalk.h"
#include "addon/checks/ChangeReview.h"
#include "addon/comparison/OtherContent.h"
#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/plservices/LoadedFileTree.h"
#include "opc/plservices/W3cDateTime.h"
#include "opc/signatures/SignatureParts.h"
#include "text/ByteCount.h"
#include "tool/process/Background.h"
#include "tool/process/Errors.h"
#include "tool/process/Interrupt.h"
#include "tool/report/FindingPrinter.h"
#include "tool/report/Messages.h"
#include "tool/report/Progress.h"

namespace tool::commands::detail {

using addon::checks::ChangeReview;
using addon::checks::PackageVerdict;
using addon::packaging::AddonPackage;

namespace {

// The last second of the year 9999; later dates have no standard notation.
constexpr std::int64_t kLastSecond = 253402300799;

std::unique_ptr<AddonPackage> open(const std::string& path, opc::interfaces::OpenMode mode) {
  auto package = std::make_unique<AddonPackage>(opc::SystemPath{path});
  package->logicalPackage().open(mode);
  return package;
}

std::optional<std::int64_t> sourceDateEpoch() {
  const char* text = std::getenv("SOURCE_DATE_EPOCH");
  if (text == nullptr || *text == '\0') return std::nullopt;
  const std::optional<std::int64_t> seconds = line::toInteger(text);
  if (!seconds || *seconds < 0 || *seconds > kLastSecond) {
    throw process::Failure(
        process::sentence("bad value of SOURCE_DATE_EPOCH", text,
                          fmt::format("expected a whole number from 0 to {}", kLastSecond)));
  }
  return seconds;
}

process::PackageLock lock(const std::string& path, const process::PackageLock::Subject& subject,
                          const line::Invocation& invocation) {
  constexpr std::int64_t kUsual = 60;
  constexpr std::int64_t kLongest = 1'000'000;
  const std::chrono::seconds limit(
      invocation.number(kLockTimeoutOption.longName, 0, kLongest).value_or(kUsual));
  if (!process::Interrupt::isDeferred()) process::Interrupt::defer();
  return {path, subject, limit, [&] {
            report::printNotice(invocation,
                                process::sentence("waiting for " + subject.kind, subject.name,
                                                  "another command is changing it"));
          }};
}

/// What any change to the package will lose.
std::string describeLosses(opc::model::Package& package, const std::string& path,
                           const ReviewRules& rules, const line::Invocation& invocation) {
  std::string text;
  for (const std::string& item : package.strayItems()) {
    text += report::describeWarning(
        invocation,
        process::sentence("item", item, "it is not a part of the package and was left out"));
  }
  const bool isSigned =
      !package.getRelationshipsByType(opc::signatures::kOriginRelationship).empty();
  if (isSigned && !rules.isAboutSignatures) {
    text += report::describeWarning(
        invocation, process::sentence("package", path, "its signature is no longer valid"));
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

}  // namespace

std::u16string toUtf16(std::string_view what, const std::string& text) {
  if (!opc::isUtf8(text)) throw process::Failure(process::sentence(what, text, "it is not UTF-8"));
  return opc::fromUtf8(text);
}

std::unique_ptr<AddonPackage> openForReading(const std::string& path) {
  return open(path, opc::interfaces::OpenMode::Read);
}

std::unique_ptr<AddonPackage> openForChanging(const std::string& path) {
  return open(path, opc::interfaces::OpenMode::Modify);
}

std::optional<std::int64_t> timestampOf(const line::Invocation& invocation) {
  const auto given = invocation.number(kTimestampOption.longName, 0, kLastSecond);
  return given ? given : sourceDateEpoch();
}

opc::zippackage::WriteOptions writeOptionsOf(const line::Invocation& invocation) {
  opc::zippackage::WriteOptions options;
  options.timestamp = timestampOf(invocation);
  options.background = process::secondThread();
  options.counted = opc::plservices::kFilesFolder;
  options.level =
      static_cast<int>(invocation.number(kLevelOption.longName, 0, 9).value_or(options.level));
  return options;
}

process::PackageLock lockPackage(const std::string& path, const line::Invocation& invocation) {
  return lock(path, {"package", path}, invocation);
}

process::PackageLock lockSite(const std::string& folder, const line::Invocation& invocation) {
  return lock(folder + (folder.ends_with('/') ? "root.json" : "/root.json"), {"site", folder},
              invocation);
}

void warnOfForeign(AddonPackage& package, const std::string& path,
                   const line::Invocation& invocation) {
  if (invocation.settings().isQuiet || addon::comparison::isAddon(package)) return;
  report::printWarning(
      invocation, process::sentence("package", path,
                                    "it is not an add-on; 'kraddon list --all' lists its parts"));
}

std::string describeFindings(const PackageVerdict& verdict, const line::Invocation& invocation) {
  if (invocation.settings().isQuiet) return {};
  return report::describeFindings(verdict, report::wantsErrorColor(invocation.settings()));
}

void refuseErrors(std::string_view what, const PackageVerdict& verdict, std::string_view hint,
                  const line::Invocation& invocation) {
  if (verdict.errors == 0) return;
  report::printToStandardError(
      report::describeFindings(verdict, report::wantsErrorColor(invocation.settings())));
  const std::string why = "it would have " + text::counted(verdict.errors, "new error");
  throw process::Failure(process::sentence(what, verdict.file, why), std::string(hint));
}

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
  std::string after = describeLosses(logical, path, rules, invocation);
  after += describeFindings(changeAndReview(*package, path, change, rules, invocation), invocation);
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

opc::interfaces::ProgressFunction startProgressBar(const line::Settings& settings) {
  const auto bar = std::make_shared<report::ProgressBar>(settings);
  return [bar, show = bar->function()](const opc::interfaces::Progress& progress) {
    if (show) show(progress);
  };
}

void commit(AddonPackage& package) {
  package.logicalPackage().close(false);
  process::Interrupt::tooLate();
}

boost::posix_time::ptime toTime(std::int64_t seconds) {
  return boost::posix_time::ptime(boost::gregorian::date(1970, 1, 1)) +
         boost::posix_time::seconds(seconds);
}

std::string formatTime(std::int64_t seconds) {
  return formatTime(toTime(seconds));
}

std::string formatTime(const boost::posix_time::ptime& time) {
  if (time.is_special()) return {};
  return opc::plservices::formatTime(time);
}

std::string fileNameOf(const std::string& path) {
  const std::size_t slash = path.find_last_of('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string baseNameOf(const std::string& path) {
  const std::string name = fileNameOf(path);
  const std::size_t dot = name.find_last_of('.');
  return dot == std::string::npos || dot == 0 ? name : name.substr(0, dot);
}

}  // namespace tool::commands::detail
