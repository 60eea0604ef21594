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

namespace tool::commands::detail {

using addon::packaging::AddonPackage;

/// A path or text of the command line for the library. `what` begins the message of the Failure for
/// one that is not UTF-8.
std::u16string toUtf16(std::string_view what, const std::string& text);

std::unique_ptr<AddonPackage> openForReading(const std::string& path);
std::unique_ptr<AddonPackage> openForChanging(const std::string& path);

/// Warns, unless told to be quiet, that a package without files has nothing of an add-on either.
void warnOfForeign(AddonPackage& package, const std::string& path,
                   const line::Invocation& invocation);

/// --timestamp or, without it, SOURCE_DATE_EPOCH.
std::optional<std::int64_t> timestampOf(const line::Invocation& invocation);

/// How to write, as --timestamp and --level say.
opc::zippackage::WriteOptions writeOptionsOf(const line::Invocation& invocation);

/// A whole command that changes the package at `path`: waits its turn, opens it, lets `change` work
/// on it and commits, with a progress bar, and warns of what was lost. Whatever fails, the package
/// stays as it was.
void changePackage(const std::string& path, opc::zippackage::WriteOptions options,
                   const line::Invocation& invocation,
                   const std::function<void(AddonPackage&)>& change);

/// What changePackage does up to the commit, so that all faults show and nothing is written.
void rehearseChange(const std::string& path, const std::function<void(AddonPackage&)>& change);

/// Commits, and then is deaf to interrupts: the new package is in place.
void commit(AddonPackage& package);

boost::posix_time::ptime toTime(std::int64_t seconds);

/// "2026-02-01T10:00:00Z"
std::string formatTime(std::int64_t seconds);
std::string formatTime(const boost::posix_time::ptime& time);

/// What follows the last '/', and that without its last extension.
std::string fileNameOf(const std::string& path);
std::string baseNameOf(const std::string& path);

}  // namespace tool::commands::detail
