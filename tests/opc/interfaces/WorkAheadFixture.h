// SPDX-License-Identifier: MIT
#pragma once

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "opc/interfaces/Background.h"
#include "tests/support/Threads.h"

namespace opc::interfaces {

using Numbers = std::vector<std::size_t>;

/// A BackgroundStarter for tests that say what happens when.
inline std::unique_ptr<BackgroundTask> startThread(std::function<void()> work) {
  return std::make_unique<test::ThreadTask>(std::move(work));
}

/// The jobs that were begun, by any thread, in order.
class JobLog {
 public:
  void add(std::size_t job) {
    {
      const std::lock_guard lock(mutex_);
      jobs_.push_back(job);
    }
    changed_.notify_all();
  }

  Numbers jobs() const {
    const std::lock_guard lock(mutex_);
    return jobs_;
  }

  /// Waits until so many were begun.
  void waitFor(std::size_t count) const {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return jobs_.size() >= count; });
  }

 private:
  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  Numbers jobs_;
};

}  // namespace opc::interfaces
