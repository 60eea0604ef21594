// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "opc/FileDescriptor.h"

namespace addon::build::detail {

/// Opens a file for reading; never waits for a pipe. Throws BuildError when the file cannot be
/// opened or is not a regular file.
opc::FileDescriptor openRegularFile(const std::string& path);

/// All bytes of a regular file. Throws as openRegularFile() does, and when the file cannot be read
/// or holds more than `limit` bytes.
std::string readWholeFile(const std::string& path, std::size_t limit);

/// A path as the library's classes take it. Throws BuildError, which begins with `what`, for one
/// that is not UTF-8.
std::u16string toUtf16(std::string_view what, const std::string& path);

}  // namespace addon::build::detail
