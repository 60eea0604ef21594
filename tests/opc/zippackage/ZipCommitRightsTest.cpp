// SPDX-License-Identifier: MIT
// The rights that the file of a package has after a commit.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "opc/zippackage/ZipPhysicalPackage.h"
#include "tests/opc/zippackage/CommitsFixture.h"
#include "tests/opc/zippackage/PackageFixture.h"

namespace opc::zippackage {
namespace {

using interfaces::OpenMode;

TEST_F(Commits, KeepTheMode) {
  for (const mode_t mode : {0600, 0640, 0666, 0751}) {
    ASSERT_EQ(::chmod(path().c_str(), mode), 0);

    changed()->close(false);

    EXPECT_EQ(modeOf(path()), mode);
    auto again = test::packageAt(path());
    again.open(OpenMode::Create);
    again.close(false);
    EXPECT_EQ(modeOf(path()), mode);
    test::makePackage(path(), {"a", "b"});
  }
}

TEST_F(Commits, KeepTheOwnerWhenAllowed) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs root";
  ASSERT_EQ(::chown(path().c_str(), 12345, 23456), 0);

  changed()->close(false);

  struct stat status {};
  ::stat(path().c_str(), &status);
  EXPECT_EQ(status.st_uid, 12345u);
  EXPECT_EQ(status.st_gid, 23456u);
}

TEST_F(Commits, OfNewFilesFollowTheUmask) {
  const mode_t old = ::umask(027);
  test::makePackage(folder_ / "new.kraddon", {"a", "b"});
  ::umask(old);

  EXPECT_EQ(modeOf(folder_ / "new.kraddon"), 0640u);
}

}  // namespace
}  // namespace opc::zippackage
