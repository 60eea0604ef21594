// SPDX-License-Identifier: MIT
#pragma once

#include "hostarray/kxarray.h"
#include "hostarray/standin/CallScope.h"

namespace hostarray::standin {

/// Which call scope frees which array. Every operation takes constant time, whatever lives. Each
/// thread has scopes of its own.
struct Registry {
  /// Puts a new array into the innermost scope; without one it belongs to its caller alone.
  static void adopt(kxArray& array) noexcept;
  /// Takes it out of the list that it is in, if any.
  static void unlink(kxArray& array) noexcept;
  /// Counts a creation. Whether it is the one that was asked to fail.
  static bool isCreationToFail() noexcept;

  /// Frees what is left in the list of a scope.
  static void clear(CallScope& scope) noexcept;
  /// Takes a scope out of the chain of scopes.
  static void remove(const CallScope& scope) noexcept;

  static thread_local CallScope* innermost;
  static thread_local std::size_t untilFailure;  // 0: none is to fail
};

}  // namespace hostarray::standin
