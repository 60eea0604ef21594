// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/FileWriting.h"

#include <unistd.h>

#include <cerrno>

#include "opc/Exception.h"

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

void readFully(int descriptor, std::uint64_t offset, unsigned char* into, std::size_t size,
               const char* what) {
  while (size > 0) {
    const ssize_t count = ::pread(descriptor, into, size, static_cast<off_t>(offset));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) throw SystemError(what, count < 0 ? errno : EIO);
    into += count;
    offset += static_cast<std::uint64_t>(count);
    size -= static_cast<std::size_t>(count);
  }
}

}  // namespace opc::zippackage::detail
