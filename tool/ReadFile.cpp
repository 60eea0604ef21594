// SPDX-License-Identifier: MIT
#include "tool/ReadFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include "opc/FileDescriptor.h"
#include "opc/SystemCall.h"
#include "tool/Errors.h"
#include "tool/Interrupt.h"

namespace tool {

std::string readWholeFile(const std::string& path, std::size_t limit) {
  const bool isInput = path == "-";
  const std::string name = isInput ? "standard input" : path;
  const auto open = [&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY); };
  const opc::FileDescriptor file(isInput ? -1 : opc::uninterrupted(open));
  if (!isInput && !file) throw systemFailure("cannot read", name, errno);
  const int descriptor = isInput ? STDIN_FILENO : file.get();
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
          sentence("cannot read", name, fmt::format("it holds more than {} bytes", limit)));
    }
  }
}

}  // namespace tool
