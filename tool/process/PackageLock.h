// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "opc/FileDescriptor.h"

namespace tool::process {

/// Keeps other commands from changing a package while it lives. Advisory: it binds only who asks
/// for it too.
class PackageLock {
 public:
  /// Waits until nobody else holds the package at `path`. When it was replaced meanwhile, the new
  /// one is locked. Nothing at the path, or something that cannot be opened or locked, is no error:
  /// the command that follows says so in its own words. Throws Interrupted while it waits.
  explicit PackageLock(const std::string& path);

 private:
  opc::FileDescriptor file_;
};

}  // namespace tool::process
