// SPDX-License-Identifier: MIT
#include "opc/zippackage/PackageFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "opc/ErrnoError.h"
#include "opc/Exception.h"

namespace opc::zippackage {
namespace {

// Without O_NONBLOCK, opening a pipe would wait for a writer.
FileDescriptor openForReading(const std::string& path) {
  for (;;) {
    FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (file) return file;
    if (errno != EINTR) throw SystemError("cannot open package '" + path + "'", errno);
  }
}

}  // namespace

FileVersion FileVersion::of(const struct stat& status) {
  return {FileIdentity(status), status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

PackageFile::PackageFile(const std::string& path) : file_(openForReading(path)) {
  struct stat status {};
  if (::fstat(file_.get(), &status) != 0) {
    throw SystemError("cannot open package '" + path + "'", errno);
  }
  const auto refuse = [&](const char* why, int number) {
    throw ErrnoError(ErrorCode::FileSystem, sentence("cannot open package", path, why), number);
  };
  if (S_ISDIR(status.st_mode)) refuse("it is a folder", EISDIR);
  if (!S_ISREG(status.st_mode)) refuse("it is not a regular file", 0);
  version_ = FileVersion::of(status);
}

void PackageFile::readAt(std::uint64_t offset, unsigned char* into, std::size_t size) const {
  // The check keeps the sum below what off_t can say.
  if (offset > this->size() || size > this->size() - offset) {
    throw Exception(ErrorCode::Damaged, "the file ends before the data that it declares");
  }
  while (size > 0) {
    const ssize_t count = ::pread(file_.get(), into, size, static_cast<off_t>(offset));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw SystemError("cannot read", errno);
    if (count == 0) {
      throw Exception(ErrorCode::Damaged, "the file was cut while it was being read");
    }
    into += count;
    offset += static_cast<std::uint64_t>(count);
    size -= static_cast<std::size_t>(count);
  }
}

}  // namespace opc::zippackage
