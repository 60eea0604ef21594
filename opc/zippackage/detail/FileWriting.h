// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

#include "opc/FileDescriptor.h"
#include "opc/zippackage/LittleEndian.h"

namespace opc::zippackage::detail {

/// Writes all of `data` at `offset`. Throws SystemError, with `what` for its beginning.
void writeFully(int descriptor, std::uint64_t offset, Bytes data, const char* what);

/// A file in `folder` that has no name and goes away with its last descriptor. Throws SystemError.
FileDescriptor makeNamelessFile(const std::string& folder);

}  // namespace opc::zippackage::detail
