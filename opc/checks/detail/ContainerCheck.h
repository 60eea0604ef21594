// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

#include "opc/checks/PackageVerification.h"
#include "opc/checks/Report.h"
#include "opc/zippackage/PackageFile.h"
#include "opc/zippackage/ZipDirectory.h"

namespace opc::checks::detail {

/// What the checks of the container found out about an item, for later checks.
struct ItemState {
  bool isDamaged = false;    ///< its data cannot be read or trusted
  bool hasBadName = false;   ///< which a finding reports
  bool hasBadMarks = false;  ///< of file, folder or link, which a finding reports
  bool isTwin = false;       ///< the second item with its name
};

/// Checks the directory, and then every header, descriptor, size and checksum: reads every byte of
/// the file that is in use. Findings 102 to 119. Throws SystemError.
std::vector<ItemState> checkContainer(const zippackage::PackageFile& file,
                                      const zippackage::ZipDirectory& directory, Reading& reading,
                                      Report& report);

/// The part of it that reads every item once, in physical order and in constant memory: findings
/// 105 to 107, 109, 113 and 116 to 118. Skips items that are already known to be damaged, so that
/// no byte is read for two items, and marks those that turn out to be.
void checkItemData(const zippackage::PackageFile& file, const zippackage::ZipDirectory& directory,
                   Reading& reading, std::vector<ItemState>& states, Report& report);

}  // namespace opc::checks::detail
