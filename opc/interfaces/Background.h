// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>

namespace opc::interfaces {

/// Work that continues beside the caller. Its destructor waits for the end.
class BackgroundTask {
 public:
  virtual ~BackgroundTask() = default;

 protected:
  BackgroundTask() = default;
  BackgroundTask(const BackgroundTask&) = default;
  BackgroundTask& operator=(const BackgroundTask&) = default;
};

/// Has `work`, which throws nothing, done by a second thread. Returns null if none is available:
/// the caller then does everything itself. The library starts no threads of its own.
using BackgroundStarter =
    std::function<std::unique_ptr<BackgroundTask>(std::function<void()> work)>;

}  // namespace opc::interfaces
