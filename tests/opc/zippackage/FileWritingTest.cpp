// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/FileWriting.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "opc/FileDescriptor.h"
#include "tests/opc/zippackage/PackageFixture.h"
#include "tests/support/TemporaryFolder.h"

namespace opc::zippackage {
namespace {

class FileReading : public testing::Test {
 protected:
  FileReading() { test::writeFile(folder_ / "file", "text"); }

  /// What `size` bytes from the second one on are, or the error.
  std::string read(int flags, std::size_t size) {
    const FileDescriptor file(::open((folder_ / "file").c_str(), flags | O_CLOEXEC));
    std::string text(size, '\0');
    auto* const into = reinterpret_cast<unsigned char*>(text.data());
    const std::string error =
        test::errorOf([&] { detail::readFully(file.get(), 1, into, size, "cannot read it"); });
    return error.empty() ? text : error;
  }

  test::TemporaryFolder folder_;
};

TEST_F(FileReading, BeyondTheEndIsAnError) {
  EXPECT_EQ(read(O_RDONLY, 3), "ext");
  EXPECT_EQ(read(O_RDONLY, 4), "cannot read it: Input/output error");
}

TEST_F(FileReading, RefusedByTheSystemSaysWhy) {
  EXPECT_EQ(read(O_WRONLY, 3), "cannot read it: Bad file descriptor");
}

}  // namespace
}  // namespace opc::zippackage
