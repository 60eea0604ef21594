// SPDX-License-Identifier: MIT
#pragma once

#include <cerrno>

namespace opc {

/// Makes a system call, and repeats it while it fails with EINTR. Not for close(), which has
/// already closed the descriptor when it fails with EINTR.
template <typename Call>
auto uninterrupted(const Call& call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

}  // namespace opc
