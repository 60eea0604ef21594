// SPDX-License-Identifier: MIT
#pragma once

namespace tool::process {

/// Thrown to stop work after a signal. Not a std::exception, so that it is not reported as a
/// failure.
struct Interrupted {
  int signal;
};

/// Turns the signals that ask a program to end (SIGINT, SIGTERM, SIGHUP and others whose default
/// action does) into stack unwinding, which cleans up.
class Interrupt {
 public:
  /// Only records these signals from now on. Signals that were ignored at the start stay ignored.
  static void defer();
  /// The same for code that does not check for interrupts: after a signal, every write of this
  /// process to a file fails as if the file were too large, so that the code ends and cleans up as
  /// on a full disk.
  static void deferAndStopWriting();
  static bool isDeferred();
  /// Restores the default action. If a signal arrived meanwhile, terminates by it now.
  static void release();
  /// Throws Interrupted if a signal arrived meanwhile.
  static void check();
  /// Ignores signals from now on, since the work is done and on the disk.
  static void ignoreFromNowOn();

  /// Terminates the program by `signal`, as if it had not been caught.
  [[noreturn]] static void die(int signal);
};

}  // namespace tool::process
