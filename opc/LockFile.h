// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <string_view>

#include "opc/FileDescriptor.h"

namespace opc {

/// A lock that excludes other processes and other threads: a file beside the one that it protects,
/// which exists only while it is held. Only those can open it, and so lock it, who may write to the
/// protected file; it is never opened for reading.
///
/// What a killed process leaves behind does not lock anything, and is removed by the next one.
class LockFile {
 public:
  /// Each kind is a lock of its own.
  enum class Kind {
    Change,  ///< held by a command for as long as it works on the file
    Commit   ///< held while the file is replaced
  };
  enum class State {
    Free,        ///< it was not tried
    Held,        ///< by this
    Busy,        ///< others hold it
    Closed,      ///< it exists, but cannot be opened: who holds it may not share it
    Impossible,  ///< it cannot be created
  };
  using Clock = std::chrono::steady_clock;
  /// Called before each pause, with the time since the first attempt. What it throws ends the wait.
  using Waiting = std::function<void(Clock::duration)>;

  LockFile() = default;
  ~LockFile() { release(); }
  LockFile(LockFile&& other) noexcept;
  LockFile& operator=(LockFile&&) = delete;

  /// Takes the lock of the file at `path`, which need not exist and must not be a link. Waits while
  /// others hold it, for `limit` at most; `waiting` may be empty.
  void take(const std::string& path, Kind kind, Clock::duration limit, const Waiting& waiting);
  void release() noexcept;

  State state() const { return state_; }
  /// The reason, an errno value, if it is closed or impossible.
  int number() const { return number_; }
  /// Of the lock file.
  const std::string& path() const { return path_; }

 private:
  void attempt(const std::string& path);
  bool create(const std::string& path);
  void discard() noexcept;
  bool isInPlace() const;

  std::string path_;
  FileDescriptor file_;
  State state_ = State::Free;
  int number_ = 0;
};

/// Whether lock files have such names. They are temporary names as well.
bool isLockName(std::string_view name) noexcept;

}  // namespace opc
