// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "opc/checks/Report.h"
#include "opc/zippackage/ZipDirectory.h"

namespace opc::checks::detail {

/// Checks what a local header and its extra fields say differently from the directory, or in a way
/// that readers do not agree on: findings 105, 109, 113, 116, 117 and 118. What makes the item
/// unreadable has been checked by reading it.
void checkLocalHeader(const zippackage::ZipDirectory& directory, std::size_t entry,
                      const zippackage::LocalHeader& header, zippackage::Bytes extra,
                      Report& report);

}  // namespace opc::checks::detail
