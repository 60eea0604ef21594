// SPDX-License-Identifier: MIT
#include "opc/FileIo.h"

#include <unistd.h>

#include <cerrno>

#include "opc/Exception.h"
#include "opc/SystemCall.h"

namespace opc {
namespace {

/// Calls `move(done, left)`, which returns how many bytes it moved, until all are.
template <typename Move>
void moveFully(std::size_t size, std::string_view what, const Move& move) {
  std::size_t done = 0;
  while (done < size) {
    const ssize_t count = uninterrupted([&] { return move(done, size - done); });
    if (count <= 0) throw SystemError(what, count < 0 ? errno : EIO);
    done += static_cast<std::size_t>(count);
  }
}

}  // namespace

void writeFully(int descriptor, const void* data, std::size_t size, std::string_view what) {
  const auto* const bytes = static_cast<const unsigned char*>(data);
  moveFully(size, what, [&](std::size_t done, std::size_t left) {
    return ::write(descriptor, bytes + done, left);
  });
}

void writeFully(int descriptor, std::uint64_t offset, const void* data, std::size_t size,
                std::string_view what) {
  const auto* const bytes = static_cast<const unsigned char*>(data);
  moveFully(size, what, [&](std::size_t done, std::size_t left) {
    return ::pwrite(descriptor, bytes + done, left, static_cast<off_t>(offset + done));
  });
}

void readFully(int descriptor, std::uint64_t offset, void* into, std::size_t size,
               std::string_view what) {
  auto* const bytes = static_cast<unsigned char*>(into);
  moveFully(size, what, [&](std::size_t done, std::size_t left) {
    return ::pread(descriptor, bytes + done, left, static_cast<off_t>(offset + done));
  });
}

}  // namespace opc
