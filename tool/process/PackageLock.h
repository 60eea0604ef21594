// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "opc/FileDescriptor.h"

namespace tool::process {

/// Prevents other commands from changing a package during its lifetime. It is advisory: only
/// programs that use it too are affected.
class PackageLock {
 public:
  /// Waits until the package at `path` is free, and locks it, or the new one if it was replaced
  /// meanwhile. If it does not exist, or cannot be opened or locked, does nothing: the command
  /// itself will report that. Throws Interrupted while it waits.
  explicit PackageLock(const std::string& path);

 private:
  opc::FileDescriptor file_;
};

}  // namespace tool::process
