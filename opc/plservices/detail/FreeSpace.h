// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <optional>

namespace opc::plservices::detail {

/// What a file system has left for this process.
struct FreeSpace {
  std::uint64_t bytes;
  std::uint64_t blockSize;                             ///< never 0
  std::optional<std::uint64_t> inodes = std::nullopt;  ///< nothing where they are not limited
};

/// Asks for the free space where an open folder lies; nothing when the file system does not say.
using FreeSpaceQuery = std::function<std::optional<FreeSpace>(int folder)>;

std::optional<FreeSpace> queryFreeSpace(int folder);

}  // namespace opc::plservices::detail
