// SPDX-License-Identifier: MIT
#include "opc/FileIo.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <string>

#include "opc/FileDescriptor.h"
#include "tests/opc/zippackage/PackageFixture.h"
#include "tests/support/TemporaryFolder.h"

namespace {

/// What the file system does: every call moves so many bytes at most, and is interrupted once.
std::size_t mostAtOnce = SIZE_MAX;
bool isInterrupting = false;

template <typename Call>
ssize_t move(std::size_t size, const Call& call) {
  static bool wasInterrupted = false;
  wasInterrupted = isInterrupting && !wasInterrupted;
  if (!wasInterrupted) return call(std::min(size, mostAtOnce));
  errno = EINTR;
  return -1;
}

}  // namespace

/// In this program, the functions of the C library.
extern "C" ssize_t write(int file, const void* data, std::size_t size) {
  return move(size, [&](std::size_t count) { return ::syscall(SYS_write, file, data, count); });
}
extern "C" ssize_t pwrite(int file, const void* data, std::size_t size, off_t offset) {
  return move(
      size, [&](std::size_t count) { return ::syscall(SYS_pwrite64, file, data, count, offset); });
}
extern "C" ssize_t pread(int file, void* into, std::size_t size, off_t offset) {
  return move(size,
              [&](std::size_t count) { return ::syscall(SYS_pread64, file, into, count, offset); });
}

namespace opc {
namespace {

class FileIo : public testing::Test {
 protected:
  FileIo() { test::writeFile(path(), "text"); }
  ~FileIo() override { beHelpful(); }

  std::string path() const { return (folder_ / "file").string(); }
  FileDescriptor opened(int flags) const {
    return FileDescriptor(::open(path().c_str(), flags | O_CLOEXEC));
  }

  static void beDifficult() {
    mostAtOnce = 7;
    isInterrupting = true;
  }
  static void beHelpful() {
    mostAtOnce = SIZE_MAX;
    isInterrupting = false;
  }

  /// What `size` bytes from the second one on are, or the error.
  std::string read(int flags, std::size_t size) const {
    const FileDescriptor file = opened(flags);
    std::string text(size, '\0');
    const std::string error =
        test::errorOf([&] { readFully(file.get(), 1, text.data(), size, "cannot read it"); });
    return error.empty() ? text : error;
  }

  test::TemporaryFolder folder_;
  const std::string bytes_ = test::randomText(1000);
};

TEST_F(FileIo, ReadingBeyondTheEndIsAnError) {
  EXPECT_EQ(read(O_RDONLY, 3), "ext");
  EXPECT_EQ(read(O_RDONLY, 4), "cannot read it: Input/output error");
}

TEST_F(FileIo, ReadingRefusedByTheSystemSaysWhy) {
  EXPECT_EQ(read(O_WRONLY, 3), "cannot read it: Bad file descriptor");
}

TEST_F(FileIo, WritingRefusedByTheSystemSaysWhy) {
  const FileDescriptor file = opened(O_RDONLY);

  EXPECT_EQ(test::errorOf([&] { writeFully(file.get(), "x", 1, "cannot write it"); }),
            "cannot write it: Bad file descriptor");
  EXPECT_EQ(test::errorOf([&] { writeFully(file.get(), 0, "x", 1, "cannot write it"); }),
            "cannot write it: Bad file descriptor");
}

TEST_F(FileIo, WritingWithoutAnOffsetContinuesWhereTheLastOneEnded) {
  const FileDescriptor file = opened(O_WRONLY);

  writeFully(file.get(), "ab", 2, "");
  writeFully(file.get(), 3, "yz", 2, "");
  writeFully(file.get(), "c", 1, "");

  EXPECT_EQ(test::readFile(path()), "abcyz");
}

TEST_F(FileIo, ReadsInAsManyPiecesAsItTakes) {
  test::writeFile(path(), "x" + bytes_);

  beDifficult();
  const std::string text = read(O_RDONLY, bytes_.size());
  beHelpful();

  EXPECT_EQ(text, bytes_);
}

TEST_F(FileIo, WritesInAsManyPiecesAsItTakes) {
  const FileDescriptor file = opened(O_WRONLY);

  beDifficult();
  writeFully(file.get(), bytes_.data(), bytes_.size(), "");
  beHelpful();

  EXPECT_EQ(test::readFile(path()), bytes_);
}

TEST_F(FileIo, WritesAtAnOffsetInAsManyPiecesAsItTakes) {
  const FileDescriptor file = opened(O_WRONLY);

  beDifficult();
  writeFully(file.get(), 4, bytes_.data(), bytes_.size(), "");
  beHelpful();

  EXPECT_EQ(test::readFile(path()), "text" + bytes_);
}

}  // namespace
}  // namespace opc
