// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "opc/checks/Report.h"
#include "opc/checks/SignatureDemands.h"
#include "opc/interfaces/Progress.h"

namespace opc::checks {

/// Checks the container of the package at `path` (UTF-8) and the packaging rules: reads every byte
/// once, and verifies every checksum; checks the signatures, which reads what they cover. Throws
/// SystemError when the file cannot be opened or read, and Exception when it is not a regular file
/// or its directory is larger than 128 MiB; whatever is wrong with its content goes into the
/// report. A check that needs what an earlier one found broken is skipped. `progress` may be empty;
/// it counts the items that have been read.
Report verifyPackage(const std::string& path,
                     const interfaces::ProgressFunction& progress = nullptr,
                     const SignatureDemands& demands = {});

/// The same for what is more than any package: what other ZIP readers may unpack differently is an
/// error in an add-on.
Report verifyAs(Subject subject, const std::string& path,
                const interfaces::ProgressFunction& progress, const SignatureDemands& demands);

}  // namespace opc::checks
