// SPDX-License-Identifier: MIT
#include "opc/plservices/FileContentSource.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "opc/Exception.h"
#include "opc/FileDescriptor.h"
#include "opc/SystemCall.h"
#include "opc/Text.h"

namespace opc::plservices {
namespace {

struct OpenedFile {
  FileDescriptor descriptor;
  struct stat status {};
};

// Not to wait for the writer of a pipe: its kind is known only once it is open.
FileDescriptor openForReading(const std::string& path) {
  for (;;) {
    FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (file) return file;
    if (errno != EINTR) throw SystemError("cannot open '" + path + "'", errno);
  }
}

OpenedFile openRegularFile(const std::string& path) {
  if (path.find('\0') != std::string::npos) {
    throw Exception(ErrorCode::InvalidArgument, "cannot open '" + path + "': it holds a NUL");
  }
  OpenedFile file{openForReading(path)};
  if (::fstat(file.descriptor.get(), &file.status) != 0) {
    throw SystemError("cannot look at '" + path + "'", errno);
  }
  if (S_ISREG(file.status.st_mode)) return file;
  throw Exception(ErrorCode::InvalidArgument,
                  "cannot read '" + path + "': it is " +
                      (S_ISDIR(file.status.st_mode) ? "a folder" : "no regular file"));
}

class FileInputStream final : public InputStream {
 public:
  explicit FileInputStream(std::string path) : path_(std::move(path)) {
    OpenedFile file = openRegularFile(path_);
    file_ = std::move(file.descriptor);
    size_ = static_cast<std::uint64_t>(file.status.st_size);
  }

  std::size_t read(unsigned char* buffer, std::size_t size) override {
    if (size == 0) return 0;
    if (!hasPeeked_) return readFromFile(buffer, size);
    *buffer = peeked_;
    hasPeeked_ = false;
    return 1;
  }

  bool isEnd() override {
    if (!hasPeeked_) hasPeeked_ = readFromFile(&peeked_, 1) == 1;
    return !hasPeeked_;
  }

 private:
  std::size_t readFromFile(unsigned char* buffer, std::size_t size) {
    if (hasSeenEnd_) return 0;
    for (;;) {
      const ssize_t count = ::read(file_.get(), buffer, size);
      if (count >= 0) return taken(static_cast<std::size_t>(count), size);
      if (errno != EINTR) throw SystemError("cannot read '" + path_ + "'", errno);
    }
  }

  // Whoever asked for more and got just what the file was to hold need not ask again.
  std::size_t taken(std::size_t count, std::size_t wanted) {
    position_ += count;
    hasSeenEnd_ = count < wanted && position_ == size_;
    return count;
  }

  std::string path_;
  FileDescriptor file_;
  std::uint64_t size_ = 0;  // when it was opened
  std::uint64_t position_ = 0;
  bool hasSeenEnd_ = false;
  unsigned char peeked_ = 0;
  bool hasPeeked_ = false;
};

}  // namespace

FileContentSource::FileContentSource(const std::u16string& path)
    : FileContentSource(toUtf8(path)) {}

FileContentSource::FileContentSource(std::string path)
    : path_(std::move(path)), facts_(openRegularFile(path_).status) {}

FileContentSource::FileContentSource(std::string path, const FileFacts& facts)
    : path_(std::move(path)), facts_(facts) {
  const auto look = [&] { return ::faccessat(AT_FDCWD, path_.c_str(), R_OK, AT_EACCESS); };
  if (uninterrupted(look) != 0) throw SystemError("cannot open '" + path_ + "'", errno);
}

std::unique_ptr<InputStream> FileContentSource::getInputStream() {
  return std::make_unique<FileInputStream>(path_);
}

}  // namespace opc::plservices
