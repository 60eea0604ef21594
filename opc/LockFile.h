// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <string_view>

#include "opc/FileDescriptor.h"

namespace opc {

/// A lock that excludes other processes and other threads: a file beside the one that it protects,
/// which exists only while it is held. Only users who may write to the protected file can open it,
/// and so lock it; it is never opened for reading.
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
    Free,          ///< take() was not called
    Held,          ///< by this object
    Busy,          ///< held by others
    Inaccessible,  ///< the lock file exists, but cannot be opened
    CannotCreate,  ///< the lock file cannot be created
  };
  using Clock = std::chrono::steady_clock;
  /// Called before each pause, with the time since the first attempt. What it throws ends the wait.
  using OnWait = std::function<void(Clock::duration)>;

  LockFile() = default;
  ~LockFile() { release(); }
  LockFile(LockFile&& other) noexcept;
  LockFile& operator=(LockFile&&) = delete;

  /// Tries to lock the file at `path`, which need not exist and must not be a link. While others
  /// hold the lock, tries again for up to `limit`; `waiting` may be empty. Throws only what
  /// `waiting` throws: check state().
  void take(const std::string& path, Kind kind, Clock::duration limit, const OnWait& waiting);
  void release() noexcept;

  State state() const { return state_; }
  /// The reason, an errno value, if it is inaccessible or cannot be created.
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

/// Whether `name` is that of a lock file. Such names are also temporary names.
bool isLockName(std::string_view name) noexcept;

}  // namespace opc
