// SPDX-License-Identifier: MIT
#include "tool/process/Secret.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "opc/FileDescriptor.h"
#include "tool/process/Errors.h"
#include "tool/process/Interrupt.h"
#include "tool/process/ReadFile.h"

namespace tool::process {

namespace {

constexpr std::size_t kMaxSize = std::size_t{1} << 20;

}  // namespace

Secret::~Secret() {
  ::explicit_bzero(text_.data(), text_.capacity());
}

void Secret::readFile(const std::string& path) {
  const opc::FileDescriptor file = openInput(path);
  struct stat info {};
  constexpr mode_t kOthers = S_IRGRP | S_IROTH;
  isExposed_ =
      ::fstat(file.get(), &info) == 0 && S_ISREG(info.st_mode) && (info.st_mode & kOthers) != 0;
  text_.resize(kMaxSize + 1);
  std::size_t size = 0;
  for (;;) {
    const ssize_t read = ::read(file.get(), text_.data() + size, text_.size() - size);
    if (read == 0) break;
    if (read < 0 && errno != EINTR) throw systemFailure("cannot read", path, errno);
    Interrupt::check();
    if (read > 0) size += static_cast<std::size_t>(read);
    if (size > kMaxSize) {
      throw Failure(
          sentence("cannot read", path, fmt::format("it is larger than {} bytes", kMaxSize)));
    }
  }
  text_.resize(size);
}

bool Secret::takeEnvironment(const char* name) {
  char* value = std::getenv(name);
  if (value == nullptr) return false;
  const std::size_t size = std::strlen(value);
  text_.assign(value, size);
  ::explicit_bzero(value, size);
  return true;
}

void Secret::keepFirstLine() {
  const std::size_t end = text_.find_first_of("\r\n");
  if (end == std::string::npos) return;
  ::explicit_bzero(text_.data() + end, text_.size() - end);
  text_.resize(end);
}

}  // namespace tool::process
