// SPDX-License-Identifier: MIT
#include "opc/plservices/detail/FreeSpace.h"

#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>

namespace opc::plservices::detail {

std::optional<FreeSpace> queryFreeSpace(int folder) {
  struct statvfs status {};
  int result = 0;
  do {
    result = ::fstatvfs(folder, &status);
  } while (result != 0 && errno == EINTR);
  // Some file systems (of the network, or made up) count nothing.
  if (result != 0 || status.f_blocks == 0 || status.f_frsize == 0) return std::nullopt;
  const std::uint64_t blocks = ::geteuid() == 0 ? status.f_bfree : status.f_bavail;
  const std::uint64_t limit = std::numeric_limits<std::uint64_t>::max() / status.f_frsize;
  FreeSpace space{std::min<std::uint64_t>(blocks, limit) * status.f_frsize, status.f_frsize};
  if (status.f_files != 0) space.inodes = status.f_ffree;
  return space;
}

}  // namespace opc::plservices::detail
