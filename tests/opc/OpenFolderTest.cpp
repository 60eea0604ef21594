// SPDX-License-Identifier: MIT
#include "opc/OpenFolder.h"

#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <map>
#include <string>

#include "tests/support/TemporaryFolder.h"

namespace {

using opc::OpenFolder;

class OpenFolders : public testing::Test {
 protected:
  OpenFolders() {
    std::filesystem::create_directory(folder_ / "inner");
    test::writeFile(folder_ / "wave.m", "x");
    std::filesystem::create_directory_symlink("inner", folder_ / "link");
  }

  std::string path() const { return folder_.path().string(); }

  test::TemporaryFolder folder_;
};

TEST_F(OpenFolders, GiveEachEntryOnceAndNotThemselves) {
  OpenFolder folder(AT_FDCWD, path());
  std::map<std::string, int> counts;
  while (const dirent* entry = folder.next()) ++counts[entry->d_name];

  EXPECT_EQ(errno, 0);
  EXPECT_EQ(counts, (std::map<std::string, int>{{"inner", 1}, {"link", 1}, {"wave.m", 1}}));
}

TEST_F(OpenFolders, AreFoundFromAnotherOne) {
  const OpenFolder folder(AT_FDCWD, path());
  OpenFolder inner(folder.descriptor(), "inner");
  ASSERT_TRUE(inner);
  EXPECT_EQ(inner.next(), nullptr);

  OpenFolder same(folder.descriptor(), "");
  ASSERT_TRUE(same);
  EXPECT_NE(same.next(), nullptr);
}

TEST_F(OpenFolders, SayWhyTheyCannotBeOpened) {
  EXPECT_FALSE(OpenFolder(AT_FDCWD, path() + "/missing"));
  EXPECT_EQ(errno, ENOENT);
  EXPECT_FALSE(OpenFolder(AT_FDCWD, path() + "/wave.m"));
  EXPECT_EQ(errno, ENOTDIR);
  EXPECT_TRUE(OpenFolder(AT_FDCWD, path() + "/link"));
  EXPECT_FALSE(OpenFolder(AT_FDCWD, path() + "/link", O_NOFOLLOW));
  EXPECT_EQ(errno, ENOTDIR);
}

TEST_F(OpenFolders, TellAFailureFromTheEnd) {
  OpenFolder folder(AT_FDCWD, path());
  const opc::FileDescriptor file(::open((folder_ / "wave.m").c_str(), O_RDONLY | O_CLOEXEC));
  ASSERT_EQ(::dup2(file.get(), folder.descriptor()), folder.descriptor());

  EXPECT_EQ(folder.next(), nullptr);
  EXPECT_EQ(errno, ENOTDIR);
}

}  // namespace
