// SPDX-License-Identifier: MIT
#pragma once

#include <pybind11/pybind11.h>

#include <chrono>
#include <memory>
#include <string>

#include "opc/interfaces/Progress.h"
#include "tool/process/PackageLock.h"

// The progress of a long call, which runs without the GIL.

namespace python {

/// Raises what a signal asks for, such as KeyboardInterrupt. Looks no more often than ten times a
/// second, since it takes the GIL. Can be called with any arguments, or none.
class SignalCheck {
 public:
  void operator()();
  void operator()(const opc::interfaces::Progress&) { (*this)(); }

 private:
  std::chrono::steady_clock::time_point next_ = {};
};

/// A function that calls a Python function with the bytes done and the bytes in total; what that
/// raises ends the work. Of calls in quick succession, most are left out, but not the last one.
/// With None it only looks for signals. The caller holds the GIL.
opc::interfaces::ProgressFunction progressFunction(const pybind11::object& callable);

inline constexpr std::chrono::seconds kDefaultLockTimeout{60};

/// Waits until no command changes the package, and keeps others from it. Signals end the wait. For
/// a caller without the GIL.
std::shared_ptr<tool::process::PackageLock> lockPackage(const std::string& path,
                                                        std::chrono::seconds limit);

}  // namespace python
