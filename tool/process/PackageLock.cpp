// SPDX-License-Identifier: MIT
#include "tool/process/PackageLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>

#include "opc/FileIdentity.h"
#include "opc/SystemCall.h"
#include "tool/process/Interrupt.h"

namespace tool::process {

namespace {

/// False when the file system knows no locks.
bool waitForLock(int descriptor) {
  while (::flock(descriptor, LOCK_EX) != 0) {
    if (errno != EINTR) return false;
    Interrupt::check();
  }
  return true;
}

bool isStillAt(const std::string& path, int descriptor) {
  struct stat locked {};
  struct stat named {};
  if (::fstat(descriptor, &locked) != 0 || ::stat(path.c_str(), &named) != 0) return false;
  return opc::FileIdentity(locked) == opc::FileIdentity(named);
}

}  // namespace

PackageLock::PackageLock(const std::string& path) {
  while (true) {
    // Not blocking: opening a named pipe would wait for a writer.
    file_.reset(opc::uninterrupted(
        [&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY); }));
    if (!file_ || !waitForLock(file_.get())) return;
    if (isStillAt(path, file_.get())) return;
    Interrupt::check();
  }
}

}  // namespace tool::process
