// SPDX-License-Identifier: MIT
#pragma once

namespace tool::process {

/// Thrown where work stops because a signal asked for it. No std::exception: nothing that reports
/// failures may take it for one.
struct Interrupted {
  int signal;
};

/// SIGINT, SIGTERM and SIGHUP, turned from sudden death into an unwinding that cleans up.
class Interrupt {
 public:
  /// From now on these signals are only noted. Signals that the program was started to ignore stay
  /// ignored.
  static void defer();
  /// The same for code that looks for no interrupts: from the signal on, every write to a file of
  /// this process fails as if the file had grown too large, so that the code ends as it does on a
  /// full disk, and cleans up.
  static void deferAndStopWriting();
  static bool isDeferred();
  /// They are sudden death again. Dies when one has come since.
  static void release();
  /// Throws Interrupted when one has come since.
  static void check();
  /// The work is done and on the disk: what comes now is too late to change the outcome.
  static void tooLate();

  /// Ends the program by `signal`, as if it had not been caught.
  [[noreturn]] static void die(int signal);
};

}  // namespace tool::process
