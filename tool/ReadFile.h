// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>

namespace tool {

/// All bytes of a file, or of standard input for "-". Throws Failure when it cannot be read, is a
/// folder, or holds more than `limit` bytes.
std::string readWholeFile(const std::string& path, std::size_t limit);

}  // namespace tool
