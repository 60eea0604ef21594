// SPDX-License-Identifier: MIT
#include "tool/process/Background.h"

#include <fmt/format.h>
#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>

#include <csignal>
#include <system_error>
#include <thread>
#include <utility>

#include "tool/process/Errors.h"

namespace tool::process {
namespace {

using opc::interfaces::BackgroundTask;

constexpr ::rlim_t kMinStackSize = ::rlim_t{128} << 10;
constexpr ::rlim_t kUsualStack = ::rlim_t{8} << 20;

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
  ~SignalsBlocked() { unblock(); }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;

  /// For a thread that started meanwhile.
  void unblock() const { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

 private:
  ::sigset_t before_;
};

/// Threads have stacks of the limit's size unless this is set.
void setStackOfThreads() {
  ::pthread_attr_t attributes;
  if (::pthread_attr_init(&attributes) != 0) return;
  ::pthread_attr_setstacksize(&attributes, kUsualStack);
  ::pthread_setattr_default_np(&attributes);
  ::pthread_attr_destroy(&attributes);
}

[[noreturn]] void refuseStack(::rlim_t size, std::string_view why) {
  throw Failure(sentence("cannot run with a stack of", fmt::format("{} KiB", size >> 10), why),
                "'ulimit -s' shows and sets the limit");
}

std::unique_ptr<BackgroundTask> start(std::function<void()> work) {
  const SignalsBlocked blocked;
  try {
    return std::make_unique<ThreadTask>(std::move(work));
  } catch (const std::system_error&) {
    return nullptr;  // no thread is available: the caller works alone
  }
}

/// Of the processors that this process may use. The C++ library counts all that are online.
bool hasOneProcessor() {
  ::cpu_set_t processors;
  return ::sched_getaffinity(0, sizeof processors, &processors) == 0 && CPU_COUNT(&processors) == 1;
}

}  // namespace

opc::interfaces::BackgroundStarter secondThread() {
  return hasOneProcessor() ? opc::interfaces::BackgroundStarter() : start;
}

void withEnoughStack(const std::function<void()>& work) {
  struct rlimit limit {};
  if (::getrlimit(RLIMIT_STACK, &limit) != 0 || limit.rlim_cur >= kUsualStack) return work();
  if (limit.rlim_cur < kMinStackSize) refuseStack(limit.rlim_cur, "128 KiB are needed");
  setStackOfThreads();
  const SignalsBlocked blocked;
  try {
    std::thread([&] {
      blocked.unblock();
      work();
    }).join();
  } catch (const std::system_error&) {
    refuseStack(limit.rlim_cur, "no thread with a larger one could be started");
  }
}

}  // namespace tool::process
