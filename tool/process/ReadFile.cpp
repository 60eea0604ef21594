// SPDX-License-Identifier: MIT
#include "tool/process/ReadFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include "tool/process/Errors.h"
#include "tool/process/Interrupt.h"

namespace tool::process {

namespace {

std::string readAll(int descriptor, const std::string& name, std::size_t limit) {
  std::vector<char> buffer(std::size_t{64} << 10);
  std::string content;
  while (true) {
    const ssize_t size = ::read(descriptor, buffer.data(), buffer.size());
    if (size == 0) return content;
    if (size < 0 && errno != EINTR) throw systemFailure("cannot read", name, errno);
    Interrupt::check();
    if (size > 0) content.append(buffer.data(), static_cast<std::size_t>(size));
    if (content.size() > limit) {
      throw Failure(
          sentence("cannot read", name, fmt::format("it is larger than {} bytes", limit)));
    }
  }
}

}  // namespace

// Opening a pipe waits for a writer.
opc::FileDescriptor openInput(const std::string& path) {
  for (;;) {
    opc::FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
    if (file) return file;
    if (errno != EINTR) throw systemFailure("cannot read", path, errno);
    Interrupt::check();
  }
}

std::string readInput(const std::string& path, std::size_t limit) {
  if (path == "-") return readAll(STDIN_FILENO, "standard input", limit);
  return readAll(openInput(path).get(), path, limit);
}

}  // namespace tool::process
