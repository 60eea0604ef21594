// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "opc/zippackage/LittleEndian.h"

namespace opc::zippackage::detail {

/// Writes all of `data` at `offset`. Throws SystemError, with `what` for its beginning.
void writeFully(int descriptor, std::uint64_t offset, Bytes data, const char* what);

}  // namespace opc::zippackage::detail
