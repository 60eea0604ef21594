// SPDX-License-Identifier: MIT
#include "addon/build/detail/ReadFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "addon/build/BuildError.h"
#include "opc/SystemCall.h"
#include "opc/Text.h"

namespace addon::build::detail {

opc::FileDescriptor openRegularFile(const std::string& path) {
  constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
  opc::FileDescriptor file(opc::uninterrupted([&] { return ::open(path.c_str(), kFlags); }));
  struct stat info {};
  if (!file || ::fstat(file.get(), &info) != 0) throw systemError("cannot read", path, errno);
  if (S_ISDIR(info.st_mode)) throw systemError("cannot read", path, EISDIR);
  if (!S_ISREG(info.st_mode)) {
    throw BuildError(opc::sentence("cannot read", path, "it is not a file"));
  }
  return file;
}

std::string readWholeFile(const std::string& path, std::size_t limit) {
  const opc::FileDescriptor file = openRegularFile(path);
  std::string content;
  std::string buffer(std::size_t{64} << 10, '\0');
  while (true) {
    const ssize_t size =
        opc::uninterrupted([&] { return ::read(file.get(), buffer.data(), buffer.size()); });
    if (size < 0) throw systemError("cannot read", path, errno);
    if (size == 0) return content;
    content.append(buffer, 0, static_cast<std::size_t>(size));
    if (content.size() <= limit) continue;
    throw BuildError(opc::sentence("cannot read", path,
                                   "it is larger than " + std::to_string(limit) + " bytes"));
  }
}

std::u16string toUtf16(std::string_view what, const std::string& path) {
  if (!opc::isUtf8(path)) throw BuildError(opc::sentence(what, path, "it is not UTF-8"));
  return opc::fromUtf8(path);
}

}  // namespace addon::build::detail
