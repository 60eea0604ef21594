// SPDX-License-Identifier: MIT
#include "opc/plservices/detail/NewFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstdint>

#include "opc/Exception.h"
#include "opc/FileIo.h"
#include "opc/SystemCall.h"
#include "opc/plservices/FolderCursor.h"

namespace opc::plservices::detail {
namespace {

int createFile(int folder, const char* name, mode_t mode) {
  constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  return uninterrupted([&] { return ::openat(folder, name, kFlags, mode); });
}

[[noreturn]] void refuseExisting(int folder, const char* name) {
  throw Exception(ErrorCode::AlreadyExists, describeEntry(folder, name) + " is there already");
}

bool isFolder(int folder, const char* name) {
  struct stat status {};
  return ::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(status.st_mode);
}

// Some file systems keep no times, or let only the owner of the whole system set them: no reason
// to do without the file.
bool isMissingFeature(int number) {
  return number == EOPNOTSUPP || number == EPERM;
}

}  // namespace

NewFile::NewFile(int folder, const char* name, const Properties& properties)
    : folder_(folder), name_(name), replaces_(properties.replaces) {
  const mode_t mode = properties.executable ? 0777 : 0666;
  if (!properties.isLarge) {
    named_.reset(createFile(folder, name, mode));
    if (named_) return;
    if (errno != EEXIST) throw SystemError("cannot create the file", errno);
    if (!replaces_) refuseExisting(folder, name);
  }
  if (isFolder(folder, name)) refuseExisting(folder, name);
  if (!temporary_.create(folder, name, mode)) {
    throw SystemError("cannot create a temporary file", errno);
  }
}

NewFile::~NewFile() {
  if (named_) ::unlinkat(folder_, name_, 0);
}

void NewFile::write(const unsigned char* bytes, std::size_t size) {
  writeFully(descriptor(), bytes, size, "cannot write");
}

void NewFile::finish(std::int64_t modified) {
  std::array<struct timespec, 2> times{};
  times[0].tv_nsec = UTIME_OMIT;
  times[1].tv_sec = modified;
  const int result = uninterrupted([&] { return ::futimens(descriptor(), times.data()); });
  if (result != 0 && !isMissingFeature(errno)) {
    throw SystemError("cannot set the time", errno);
  }
  if (named_) {
    closeNamed();
  } else {
    takePlace();
  }
}

void NewFile::closeNamed() {
  // An interrupted close has closed the file; trying again might hit somebody else's.
  if (::close(named_.release()) == 0 || errno == EINTR) return;
  const int number = errno;
  ::unlinkat(folder_, name_, 0);
  throw SystemError("cannot close", number);
}

// What is there is never opened or followed: a link gives way itself.
void NewFile::takePlace() {
  if (!temporary_.finishWriting()) throw SystemError("cannot close", errno);
  if (temporary_.putInPlace(replaces_)) return;
  const int number = errno;
  if (number == EEXIST || isFolder(folder_, name_)) refuseExisting(folder_, name_);
  throw SystemError("cannot put the file in its place", number);
}

}  // namespace opc::plservices::detail
