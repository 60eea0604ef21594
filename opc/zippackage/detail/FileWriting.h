// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

#include "opc/zippackage/LittleEndian.h"

namespace opc::zippackage::detail {

/// Writes all of `data` at `offset`. Throws SystemError, with `what` for its beginning.
void writeFully(int descriptor, std::uint64_t offset, Bytes data, const char* what);

/// Reads all `size` bytes at `offset`, which must be there. Throws SystemError in the same way.
void readFully(int descriptor, std::uint64_t offset, unsigned char* into, std::size_t size,
               const char* what);

}  // namespace opc::zippackage::detail
