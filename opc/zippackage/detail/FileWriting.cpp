// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/FileWriting.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "opc/Exception.h"
#include "opc/SystemCall.h"
#include "opc/TemporaryFile.h"

namespace opc::zippackage::detail {

void writeFully(int descriptor, std::uint64_t offset, Bytes data, const char* what) {
  while (!data.empty()) {
    const ssize_t count =
        ::pwrite(descriptor, data.data(), data.size(), static_cast<off_t>(offset));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw SystemError(what, errno);
    offset += static_cast<std::uint64_t>(count);
    data = data.subspan(static_cast<std::size_t>(count));
  }
}

FileDescriptor makeNamelessFile(const std::string& folder) {
  FileDescriptor file(
      uninterrupted([&] { return ::open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600); }));
  if (file) return file;
  // Not every file system supports it: the file has a name for a moment then.
  std::string path = folder + "/kraddon";
  file = createTemporaryFile(AT_FDCWD, path, O_RDWR, 0600);
  if (!file) throw SystemError("cannot make a temporary file in '" + folder + "'", errno);
  ::unlink(path.c_str());
  return file;
}

}  // namespace opc::zippackage::detail
