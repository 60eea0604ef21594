// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "opc/zippackage/PackageFile.h"

namespace opc::zippackage::detail {

/// A local header that replaces another one.
struct AlignedHeader {
  std::vector<unsigned char> bytes;  ///< with name and extra fields
  std::uint64_t oldSize = 0;         ///< of the header that it replaces
};

/// Makes a header, with a growth hint of the right length, for the item
/// whose header lies at `from` in `file`: written at `to`, its data begin at the same place of a
/// block as they do now, so that the file system can share the blocks. Nothing if that takes no
/// other header, or if the header is not as it should be; `end` is where the next one begins.
/// Throws what reading throws.
std::optional<AlignedHeader> alignHeader(const PackageFile& file, std::uint64_t from,
                                         std::uint64_t end, std::uint64_t to);

}  // namespace opc::zippackage::detail
