// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>

namespace tool::process {

/// All bytes of a regular file; waits for nobody. Throws Failure when it cannot be read, is
/// something else, or holds more than `limit` bytes.
std::string readWholeFile(const std::string& path, std::size_t limit);

/// The same of what a user names as input: a pipe as well, or standard input for "-". An interrupt
/// ends the wait for it.
std::string readInput(const std::string& path, std::size_t limit);

}  // namespace tool::process
