// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace opc {

/// Writes all `size` bytes at the position of the file. Throws SystemError, with `what` for its
/// beginning, such as "cannot write 'a/b'".
void writeFully(int descriptor, const void* data, std::size_t size, std::string_view what);

/// The same at `offset`. The position of the file stays as it is.
void writeFully(int descriptor, std::uint64_t offset, const void* data, std::size_t size,
                std::string_view what);

/// Reads all `size` bytes at `offset`; that they are not there is an error (EIO), too. Throws
/// SystemError in the same way.
void readFully(int descriptor, std::uint64_t offset, void* into, std::size_t size,
               std::string_view what);

}  // namespace opc
