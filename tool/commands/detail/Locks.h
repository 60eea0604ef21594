// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "tool/line/Arguments.h"
#include "tool/process/PackageLock.h"

namespace tool::commands::detail {

/// Locks the package at `path` against other commands, and waits for as long as --lock-timeout
/// says. Defers signals (Interrupt::defer), so that an interrupt ends the wait cleanly.
process::PackageLock lockPackage(const std::string& path, const line::Invocation& invocation);
/// The same for a site, by its root, which need not exist.
process::PackageLock lockSite(const std::string& folder, const line::Invocation& invocation);

}  // namespace tool::commands::detail
