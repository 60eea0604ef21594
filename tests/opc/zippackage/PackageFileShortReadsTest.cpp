// SPDX-License-Identifier: MIT
// A file system may return fewer bytes at once than are wanted.
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <string>

#include "opc/zippackage/PackageFile.h"
#include "tests/opc/zippackage/PackageFixture.h"
#include "tests/support/TemporaryFolder.h"

namespace {

std::atomic<std::size_t> mostAtOnce = SIZE_MAX;

}  // namespace

/// In this program, the function of the C library.
extern "C" ssize_t pread(int file, void* into, std::size_t size, off_t offset) {
  return ::syscall(SYS_pread64, file, into, std::min(size, mostAtOnce.load()), offset);
}

namespace opc::zippackage {
namespace {

TEST(PackageFile, ReadsInAsManyPiecesAsItTakes) {
  const test::TemporaryFolder folder;
  const std::string bytes = test::randomText(1000);
  test::writeFile(folder / "file", bytes);
  const PackageFile file((folder / "file").string());
  std::string read(900, '\0');

  mostAtOnce = 7;
  file.readAt(100, reinterpret_cast<unsigned char*>(read.data()), read.size());
  mostAtOnce = SIZE_MAX;

  EXPECT_EQ(read, bytes.substr(100));
}

}  // namespace
}  // namespace opc::zippackage
