// SPDX-License-Identifier: MIT
#pragma once

#include <cerrno>

namespace opc {

/// Makes a system call, again for as long as a signal interrupts it. Not for close(), which has
/// closed the file by then.
template <typename Call>
auto uninterrupted(const Call& call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

}  // namespace opc
