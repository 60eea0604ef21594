// SPDX-License-Identifier: MIT
#pragma once

#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "addon/checks/PackageVerdict.h"
#include "addon/packaging/AddonPackage.h"
#include "addon/packaging/DocumentTable.h"
#include "opc/zippackage/ZipPhysicalPackage.h"
#include "tool/line/Arguments.h"
#include "tool/process/PackageLock.h"

namespace tool::commands::detail {

using addon::packaging::AddonPackage;

/// Converts a path or text of the command line for the library. Throws Failure, whose message
/// begins with `what`, if it is not UTF-8.
std::u16string toUtf16(std::string_view what, const std::string& text);

std::unique_ptr<AddonPackage> openForReading(const std::string& path);
std::unique_ptr<AddonPackage> openForChanging(const std::string& path);

/// Locks the package at `path` against other commands, and waits for as long as --lock-timeout
/// says. Defers signals (Interrupt::defer), so that an interrupt ends the wait cleanly.
process::PackageLock lockPackage(const std::string& path, const line::Invocation& invocation);
/// The same for a site, by its root, which need not exist.
process::PackageLock lockSite(const std::string& folder, const line::Invocation& invocation);

/// Warns, unless --quiet is set, if a package without files is not an add-on either.
void warnOfForeign(AddonPackage& package, const std::string& path,
                   const line::Invocation& invocation);

/// --timestamp or, without it, SOURCE_DATE_EPOCH.
std::optional<std::int64_t> timestampOf(const line::Invocation& invocation);

/// How to write, as --timestamp and --level say.
opc::zippackage::WriteOptions writeOptionsOf(const line::Invocation& invocation);

/// What becomes of the findings that a change brings about (addon::checks::ChangeReview).
struct ReviewRules {
  enum class Kind : std::uint8_t { None, Report, RefuseErrors };

  Kind kind = Kind::Report;
  /// The document that the change stored as a whole, so that all of it is new; else null. The
  /// change itself may set it.
  const addon::packaging::DocumentTable* replaced = nullptr;
  /// Whether the change keeps signatures, or takes them away, so that no warning says that they are
  /// broken.
  bool isAboutSignatures = false;
};

/// RefuseErrors or, with --no-verify, None.
ReviewRules strictReviewOf(const line::Invocation& invocation);

/// Changes the package at `path`: waits for other commands, opens it, calls `change`, commits with
/// a progress bar, and warns of what was lost. Prints the findings that the change brings about;
/// with RefuseErrors, throws Failure if there is an error among them. On any failure, the package
/// stays as it was.
void changePackage(const std::string& path, opc::zippackage::WriteOptions options,
                   const line::Invocation& invocation,
                   const std::function<void(AddonPackage&)>& change,
                   const ReviewRules& rules = ReviewRules());

/// Does what changePackage does except the commit, so that all errors show but nothing is written.
void rehearseChange(const std::string& path, const line::Invocation& invocation,
                    const std::function<void(AddonPackage&)>& change);

/// The findings as text for standard error; nothing if --quiet is set.
std::string describeFindings(const addon::checks::PackageVerdict& verdict,
                             const line::Invocation& invocation);

/// If there is an error among the findings, prints them and throws Failure. `what`, such as "cannot
/// change", is the beginning of its message.
void refuseErrors(std::string_view what, const addon::checks::PackageVerdict& verdict,
                  std::string_view hint, const line::Invocation& invocation);

/// A function that shows a progress bar as long as it exists.
opc::interfaces::ProgressFunction startProgressBar(const line::Settings& settings);

/// Commits. After that, interrupts are ignored, since the new package is in place.
void commit(AddonPackage& package);

boost::posix_time::ptime toTime(std::int64_t seconds);

/// "2026-02-01T10:00:00Z"
std::string formatTime(std::int64_t seconds);
std::string formatTime(const boost::posix_time::ptime& time);

/// The name after the last '/', without its last extension.
std::string fileNameOf(const std::string& path);
std::string baseNameOf(const std::string& path);

}  // namespace tool::commands::detail
