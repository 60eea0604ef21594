// SPDX-License-Identifier: MIT
#include "opc/plservices/detail/NewFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>

#include "opc/Exception.h"
#include "opc/SystemCall.h"
#include "opc/TemporaryFile.h"
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

NewFile::NewFile(int folder, const char* name, bool executable, bool replace)
    : folder_(folder), name_(name) {
  const mode_t mode = executable ? 0777 : 0666;
  file_.reset(createFile(folder, name, mode));
  if (file_) return;
  if (errno == EEXIST && replace) {
    createBeside(mode);
    return;
  }
  if (errno == EEXIST) refuseExisting(folder, name);
  throw SystemError("cannot create the file", errno);
}

void NewFile::createBeside(mode_t mode) {
  if (isFolder(folder_, name_)) refuseExisting(folder_, name_);
  temporary_ = name_;
  file_ = createTemporaryFile(folder_, temporary_, O_WRONLY, mode);
  if (!file_) throw SystemError("cannot create a temporary file", errno);
}

NewFile::~NewFile() {
  if (!finished_) ::unlinkat(folder_, currentName(), 0);
}

void NewFile::write(const unsigned char* bytes, std::size_t size) {
  while (size != 0) {
    const ssize_t count = ::write(file_.get(), bytes, size);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw SystemError("cannot write", errno);
    bytes += count;
    size -= static_cast<std::size_t>(count);
  }
}

void NewFile::finish(std::int64_t modified) {
  std::array<struct timespec, 2> times{};
  times[0].tv_nsec = UTIME_OMIT;
  times[1].tv_sec = modified;
  const int result = uninterrupted([&] { return ::futimens(file_.get(), times.data()); });
  if (result != 0 && !isMissingFeature(errno)) {
    throw SystemError("cannot set the time", errno);
  }
  // An interrupted close has closed the file; trying again might hit somebody else's.
  if (::close(file_.release()) != 0 && errno != EINTR) throw SystemError("cannot close", errno);
  if (!temporary_.empty()) takePlace();
  finished_ = true;
}

// What is there is never opened or followed: a link gives way itself.
void NewFile::takePlace() {
  const auto rename = [&] { return ::renameat(folder_, temporary_.c_str(), folder_, name_); };
  if (uninterrupted(rename) == 0) return;
  const int number = errno;
  if (isFolder(folder_, name_)) refuseExisting(folder_, name_);
  throw SystemError("cannot replace what is there", number);
}

}  // namespace opc::plservices::detail
