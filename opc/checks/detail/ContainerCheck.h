// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

#include "opc/checks/Report.h"
#include "opc/interfaces/Progress.h"
#include "opc/zippackage/PackageFile.h"
#include "opc/zippackage/ZipDirectory.h"

namespace opc::checks::detail {

/// What the checks of the container found out about an item, for those that come after.
struct ItemState {
  bool isDamaged = false;   ///< its data cannot be read, or must not be relied on
  bool hasBadName = false;  ///< and a finding that says so
  bool isTwin = false;      ///< the second item of its name
};

/// Checks what shows in the directory, and then every header, descriptor, size and checksum: reads
/// every byte of the file that is in use. Findings 102 to 115. `progress` may be empty. Throws
/// opc::SystemError.
std::vector<ItemState> checkContainer(const opc::zippackage::PackageFile& file,
                                      const opc::zippackage::ZipDirectory& directory,
                                      const opc::interfaces::ProgressFunction& progress,
                                      Report& report);

}  // namespace opc::checks::detail
