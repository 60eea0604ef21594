// SPDX-License-Identifier: MIT
#include "tool/process/Background.h"

#include <csignal>
#include <system_error>
#include <thread>
#include <utility>

namespace tool::process {
namespace {

using opc::interfaces::BackgroundTask;

class ThreadTask final : public BackgroundTask {
 public:
  explicit ThreadTask(std::function<void()> work) : thread_(std::move(work)) {}
  ~ThreadTask() override { thread_.join(); }
  ThreadTask(const ThreadTask&) = delete;
  ThreadTask& operator=(const ThreadTask&) = delete;

 private:
  std::thread thread_;
};

/// No signal reaches threads that start while it lives.
class SignalsBlocked {
 public:
  SignalsBlocked() {
    ::sigset_t all;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  ~SignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;

 private:
  ::sigset_t before_;
};

std::unique_ptr<BackgroundTask> start(std::function<void()> work) {
  const SignalsBlocked blocked;
  try {
    return std::make_unique<ThreadTask>(std::move(work));
  } catch (const std::system_error&) {
    return nullptr;  // no thread to be had: the work is done without
  }
}

}  // namespace

opc::interfaces::BackgroundStarter secondThread() {
  // Of those that this process may use.
  return std::thread::hardware_concurrency() > 1 ? start : opc::interfaces::BackgroundStarter();
}

}  // namespace tool::process
