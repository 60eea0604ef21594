// SPDX-License-Identifier: MIT
#include "tool/process/Interrupt.h"

#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>

namespace tool::process {

namespace {

// Whatever asks a program to end and can be caught.
constexpr std::array kSignals{SIGINT,  SIGTERM, SIGHUP,  SIGQUIT,   SIGXCPU,
                              SIGALRM, SIGUSR1, SIGUSR2, SIGVTALRM, SIGPROF};

std::atomic<int> received = 0;  // threads look at it, too
bool isNoting = false;
bool isTooLate = false;

using Handler = void (*)(int);

void setHandler(int signal, Handler handler) {
  struct sigaction action {};
  action.sa_handler = handler;
  ::sigemptyset(&action.sa_mask);
  action.sa_flags = 0;  // no SA_RESTART: who waits for a lock is to wake up
  ::sigaction(signal, &action, nullptr);
}

void catchAll(Handler handler) {
  for (const int signal : kSignals) {
    struct sigaction old {};
    if (::sigaction(signal, nullptr, &old) == 0 && old.sa_handler == SIG_IGN) continue;
    setHandler(signal, handler);
  }
}

extern "C" void noteSignal(int signal) {
  received = signal;
}

extern "C" void noteSignalAndStopWriting(int signal) {
  received = signal;
  struct rlimit limit {};
  if (::getrlimit(RLIMIT_FSIZE, &limit) != 0) return;
  limit.rlim_cur = 0;
  ::setrlimit(RLIMIT_FSIZE, &limit);
}

}  // namespace

void Interrupt::defer() {
  isNoting = true;
  setHandler(SIGXFSZ, SIG_IGN);  // a write beyond the limit is to fail, not to kill
  catchAll(noteSignal);
}

void Interrupt::deferAndStopWriting() {
  isNoting = true;
  setHandler(SIGXFSZ, SIG_IGN);
  catchAll(noteSignalAndStopWriting);
}

bool Interrupt::isDeferred() {
  return isNoting;
}

void Interrupt::release() {
  isNoting = false;
  catchAll(SIG_DFL);
  if (received != 0) die(received);
}

void Interrupt::check() {
  if (received != 0 && !isTooLate) throw Interrupted{received};
}

void Interrupt::ignoreFromNowOn() {
  isTooLate = true;
}

void Interrupt::die(int signal) {
  setHandler(signal, SIG_DFL);
  ::sigset_t set;
  ::sigemptyset(&set);
  ::sigaddset(&set, signal);
  ::sigprocmask(SIG_UNBLOCK, &set, nullptr);
  ::raise(signal);
  ::_exit(128 + signal);
}

}  // namespace tool::process
