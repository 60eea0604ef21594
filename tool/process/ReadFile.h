// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>

#include "opc/FileDescriptor.h"

namespace tool::process {

/// All bytes of what a user names as input: a file, a pipe, or standard input for "-". An interrupt
/// ends the wait for it. Throws Failure when it cannot be read or holds more than `limit` bytes.
std::string readInput(const std::string& path, std::size_t limit);

/// Opens a file or pipe to be read. An interrupt ends the wait for the writer of a pipe.
/// Throws Failure.
opc::FileDescriptor openInput(const std::string& path);

}  // namespace tool::process
