// SPDX-License-Identifier: MIT
#include "opc/plservices/NewFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>

#include "opc/Exception.h"
#include "opc/plservices/FolderCursor.h"

namespace opc::plservices {
namespace {

int createFile(int folder, const char* name, mode_t mode) {
  for (;;) {
    const int file =
        ::openat(folder, name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode);
    if (file >= 0 || errno != EINTR) return file;
  }
}

[[noreturn]] void refuseExisting(int folder, const char* name) {
  throw Exception(ErrorCode::AlreadyExists, describeEntry(folder, name) + " is there already");
}

void removeExisting(int folder, const char* name) {
  if (::unlinkat(folder, name, 0) == 0 || errno == ENOENT) return;
  if (errno == EISDIR || errno == EPERM) refuseExisting(folder, name);
  throw SystemError("cannot replace what is there", errno);
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
  if (!file_ && errno == EEXIST && replace) {
    removeExisting(folder, name);
    file_.reset(createFile(folder, name, mode));
  }
  if (file_) return;
  if (errno == EEXIST) refuseExisting(folder, name);
  throw SystemError("cannot create the file", errno);
}

NewFile::~NewFile() {
  if (!finished_) ::unlinkat(folder_, name_, 0);
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
  if (::futimens(file_.get(), times.data()) != 0 && !isMissingFeature(errno)) {
    throw SystemError("cannot set the time", errno);
  }
  // An interrupted close has closed the file; trying again might hit somebody else's.
  if (::close(file_.release()) != 0 && errno != EINTR) throw SystemError("cannot close", errno);
  finished_ = true;
}

}  // namespace opc::plservices
