// SPDX-License-Identifier: MIT
#pragma once

#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "addon/packaging/AddonPackage.h"
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

/// Warns, unless --quiet is set, if a package without files is not an add-on either.
void warnOfForeign(AddonPackage& package, const std::string& path,
                   const line::Invocation& invocation);

/// --timestamp or, without it, SOURCE_DATE_EPOCH.
std::optional<std::int64_t> timestampOf(const line::Invocation& invocation);

/// How to write, as --timestamp and --level say.
opc::zippackage::WriteOptions writeOptionsOf(const line::Invocation& invocation);

/// Changes the package at `path`: waits for other commands, opens it, calls `change`, commits with
/// a progress bar, and warns of what was lost. On any failure, the package stays as it was.
void changePackage(const std::string& path, opc::zippackage::WriteOptions options,
                   const line::Invocation& invocation,
                   const std::function<void(AddonPackage&)>& change);

/// Does what changePackage does except the commit, so that all errors show but nothing is written.
void rehearseChange(const std::string& path, const std::function<void(AddonPackage&)>& change);

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
