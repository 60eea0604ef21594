// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>

namespace tool::process {

/// All bytes of a regular file, without blocking. Throws Failure if it cannot be read, is not a
/// regular file, or is larger than `limit` bytes.
std::string readWholeFile(const std::string& path, std::size_t limit);

/// The same for an input that the user named, which may be a pipe, or "-" for standard input. An
/// interrupt ends the wait.
std::string readInput(const std::string& path, std::size_t limit);

}  // namespace tool::process
