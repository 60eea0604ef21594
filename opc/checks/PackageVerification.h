// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "opc/checks/Report.h"
#include "opc/checks/SignatureDemands.h"
#include "opc/interfaces/Background.h"
#include "opc/interfaces/PackedContents.h"
#include "opc/interfaces/Progress.h"

namespace opc::checks {

using ContentTest = interfaces::PackedContents::Test;

/// How a package is read. All but the result may be empty.
struct Reading {
  interfaces::ProgressFunction progress = nullptr;  ///< counts the items that have been read
  interfaces::BackgroundStarter starter = nullptr;  ///< for a second thread that reads items, too
  ContentTest test = nullptr;
  signatures::ItemDigests* digests = nullptr;  ///< gets those of all sound items
  /// The items whose contents it has are not unpacked unless there are `digests`; the test is the
  /// one that it was made with.
  const interfaces::PackedContents* packed = nullptr;
  /// The result, by item: whether its content passed the test. Large items do not.
  std::vector<bool> passed = {};
};

/// Checks the container of the package at `path` (UTF-8) and the packaging rules: reads every byte
/// once, and verifies every checksum; checks the signatures, which reads what they cover. Throws
/// SystemError when the file cannot be opened or read, and Exception when it is not a regular file
/// or its directory is larger than 128 MiB; whatever is wrong with its content goes into the
/// report. A check that needs what an earlier one found broken is skipped.
Report verifyPackage(const std::string& path,
                     const interfaces::ProgressFunction& progress = nullptr,
                     const SignatureDemands& demands = {},
                     const interfaces::BackgroundStarter& starter = nullptr);

/// The same for what is more than any package: what other ZIP readers may unpack differently is an
/// error in an add-on.
Report verifyAs(Subject subject, const std::string& path, const SignatureDemands& demands,
                Reading& reading);

}  // namespace opc::checks
