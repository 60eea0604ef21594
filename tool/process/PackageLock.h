// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "opc/LockFile.h"
#include "opc/interfaces/Progress.h"
#include "tool/process/Interrupt.h"

namespace tool::process {

/// Prevents other commands from changing a package, or a site, during its lifetime. It is advisory:
/// only programs that use it too are affected.
class PackageLock {
 public:
  /// What messages call it.
  struct Subject {
    std::string kind;
    std::string name;
  };

  /// Waits until the package at `path`, which may be a link to it and need not exist, is free, and
  /// locks it. Calls `notify` once if that takes longer than a second, and `check`, whose
  /// exceptions end the wait, before each pause. Throws Failure after `limit`. Locks nothing if the
  /// folder does not exist or cannot be written to: the command itself will report that. Messages
  /// name the package by its path, or else `subject`.
  PackageLock(const std::string& path, std::chrono::seconds limit,
              const std::function<void()>& notify,
              const opc::interfaces::StopFunction& check = Interrupt::check)
      : PackageLock(path, {"package", path}, limit, notify, check) {}
  PackageLock(const std::string& path, const Subject& subject, std::chrono::seconds limit,
              const std::function<void()>& notify,
              const opc::interfaces::StopFunction& check = Interrupt::check);

 private:
  opc::LockFile lock_;
};

}  // namespace tool::process
