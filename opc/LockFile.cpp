// SPDX-License-Identifier: MIT
#include "opc/LockFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <thread>
#include <utility>

#include "opc/Exception.h"
#include "opc/FileIdentity.h"
#include "opc/FilePermissions.h"
#include "opc/SystemCall.h"
#include "opc/TemporaryFile.h"

namespace opc {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kFirstPause{1};
constexpr milliseconds kMaxPause{16};
constexpr mode_t kWriters = 0222;
constexpr mode_t kOwner = 0200;
constexpr std::string_view kChange = "change";
constexpr std::string_view kCommit = "commit";

std::string lockPath(const std::string& path, LockFile::Kind kind) {
  const std::size_t start = path.rfind('/') + 1;  // npos + 1 is 0
  return path.substr(0, start) +
         temporaryName(path.substr(start), kind == LockFile::Kind::Change ? kChange : kCommit);
}

}  // namespace

LockFile::LockFile(LockFile&& other) noexcept
    : path_(std::move(other.path_)),
      file_(std::move(other.file_)),
      state_(std::exchange(other.state_, State::Free)),
      number_(other.number_) {}

void LockFile::take(const std::string& path, Kind kind, Clock::duration limit,
                    const OnWait& waiting) {
  release();
  path_ = lockPath(path, kind);
  const auto start = Clock::now();
  for (milliseconds pause = kFirstPause;; pause = std::min(2 * pause, kMaxPause)) {
    attempt(path);
    if (state_ == State::Held || state_ == State::CannotCreate) return;
    const auto waited = Clock::now() - start;
    if (waited >= limit) return;
    if (waiting) waiting(waited);
    std::this_thread::sleep_for(std::min<Clock::duration>(pause, limit - waited));
  }
}

void LockFile::attempt(const std::string& path) {
  // Not blocking: opening a named pipe would wait for a reader.
  constexpr int kFlags = O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  state_ = State::Busy;
  if (!create(path)) {
    if (state_ == State::CannotCreate) return;
    file_.reset(uninterrupted([&] { return ::open(path_.c_str(), kFlags); }));
    if (!file_) {
      number_ = errno;
      if (number_ != ENOENT) state_ = State::Inaccessible;
      return;
    }
  }
  const int result = uninterrupted([&] { return ::flock(file_.get(), LOCK_EX | LOCK_NB); });
  // Where the file system has no locks, the file alone has to do.
  if (result == 0 ? isInPlace() : errno != EWOULDBLOCK) {
    state_ = State::Held;
  } else {
    file_.reset();
  }
}

// Returns false if it already exists or, with the state set, cannot be created.
bool LockFile::create(const std::string& path) {
  struct stat status {};
  const bool exists = ::lstat(path.c_str(), &status) == 0;
  const bool isShared =
      exists && ((status.st_mode & kWriters & ~kOwner) != 0 || status.st_uid != ::geteuid());
  // Without a file to protect, those may lock it who could write to a new one.
  const mode_t mode = exists ? kOwner : kWriters;
  constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  file_.reset(uninterrupted([&] { return ::open(path_.c_str(), kFlags, mode); }));
  if (!file_) {
    number_ = errno;
    if (number_ != EEXIST) state_ = State::CannotCreate;
    return false;
  }
  if (!isShared) return true;
  try {
    copyWritePermissions(path, status, file_.get());
    return true;
  } catch (const SystemError& error) {
    number_ = error.number();
    state_ = State::CannotCreate;
    discard();
    return false;
  } catch (...) {
    discard();  // Short of memory: no lock file must stay.
    throw;
  }
}

// Removes a lock file that was created and not locked.
void LockFile::discard() noexcept {
  ::unlink(path_.c_str());
  file_.reset();
}

// Whoever held it before may have removed it.
bool LockFile::isInPlace() const {
  struct stat locked {};
  struct stat named {};
  return ::fstat(file_.get(), &locked) == 0 && ::lstat(path_.c_str(), &named) == 0 &&
         FileIdentity(locked) == FileIdentity(named);
}

void LockFile::release() noexcept {
  if (state_ == State::Held) ::unlink(path_.c_str());
  file_.reset();
  state_ = State::Free;
}

bool isLockName(std::string_view name) noexcept {
  const std::string_view letters = lettersOfTemporaryName(name);
  return letters == kChange || letters == kCommit;
}

}  // namespace opc
