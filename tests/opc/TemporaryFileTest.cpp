// SPDX-License-Identifier: MIT
#include "opc/TemporaryFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <iterator>
#include <string>

#include "tests/opc/zippackage/PackageFixture.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using opc::isTemporaryName;
using opc::TemporaryFile;
using opc::temporaryName;
namespace fs = std::filesystem;

TEST(TemporaryFile, ANameThatIsMadeIsRecognised) {
  for (const std::string name : {"a", "p.kraddon", "\xC3\xA9", "."}) {
    EXPECT_TRUE(isTemporaryName(temporaryName(name))) << name;
  }
}

TEST(TemporaryFile, NamesOfOtherShapesAreNot) {
  for (const char* name :
       {"", ".tmp", ".abcdef.tmp", "..abcdef.tmp", "a.abcdef.tmp", ".a.abcdefg.tmp",
        ".a.abc_ef.tmp", ".a.abcdef.tmpx", ".kraddon-abcdef"}) {
    EXPECT_FALSE(isTemporaryName(name)) << name;
  }
}

TEST(TemporaryFile, TwoNamesDiffer) {
  EXPECT_NE(temporaryName("a"), temporaryName("a"));
}

TEST(TemporaryFile, ALongNameIsCutAtACharacter) {
  std::string name;
  while (name.size() < 254) name += "\xC3\xA9";

  const std::string made = temporaryName(name);

  EXPECT_LE(made.size(), 255u);
  EXPECT_GE(made.size(), 254u);
  EXPECT_EQ(made.substr(1, made.size() - 12), name.substr(0, made.size() - 12));
  EXPECT_EQ((made.size() - 12) % 2, 0u);
}

class TemporaryFiles : public testing::Test {
 protected:
  TemporaryFiles() : open_(::open(folder_.path().c_str(), O_RDONLY | O_DIRECTORY)) {}

  std::size_t names() const {
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator(folder_.path()), fs::directory_iterator()));
  }
  /// A file in the making, with text.
  void make(TemporaryFile& file, mode_t mode = 0666) const {
    ASSERT_TRUE(file.create(open_.get(), "a.txt", mode));
    ASSERT_EQ(::write(file.descriptor(), "new", 3), 3);
  }
  fs::path path() const { return folder_ / "a.txt"; }

  test::TemporaryFolder folder_;
  opc::FileDescriptor open_;
};

TEST_F(TemporaryFiles, HaveNoNameBeforeTheyAreComplete) {
  TemporaryFile file;
  make(file);
  if (!file.name().empty()) GTEST_SKIP() << "needs files without a name";

  EXPECT_EQ(names(), 0u);
  EXPECT_EQ(test::readFile(file.pathOfNameless()), "new");
}

TEST_F(TemporaryFiles, GetTheirNameInOneStep) {
  for (const bool replaces : {false, true}) {
    const fs::path made = path();
    fs::remove(made);
    TemporaryFile file;
    make(file);

    EXPECT_TRUE(file.finishWriting());
    EXPECT_TRUE(file.putInPlace(replaces));

    EXPECT_EQ(test::readFile(made), "new");
    EXPECT_EQ(names(), 1u);
  }
}

TEST_F(TemporaryFiles, ReplaceAFileOrALinkOnRequest) {
  for (const bool isLink : {false, true}) {
    fs::remove(path());
    if (isLink) {
      fs::create_symlink("elsewhere", path());
    } else {
      test::writeFile(path(), "old");
    }
    TemporaryFile file;
    make(file);

    EXPECT_TRUE(file.putInPlace(true));

    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(path())));
    EXPECT_EQ(test::readFile(path()), "new");
    EXPECT_EQ(names(), 1u);
  }
}

TEST_F(TemporaryFiles, RefuseATakenName) {
  test::writeFile(path(), "old");
  {
    TemporaryFile file;
    make(file);

    EXPECT_FALSE(file.putInPlace(false));

    EXPECT_EQ(errno, EEXIST);
  }
  EXPECT_EQ(test::readFile(path()), "old");
  EXPECT_EQ(names(), 1u);
}

TEST_F(TemporaryFiles, DisappearUnlessTheyArePutInPlace) {
  {
    TemporaryFile file;
    make(file);
  }
  EXPECT_EQ(names(), 0u);
}

TEST_F(TemporaryFiles, OfAPathLieInItsFolder) {
  TemporaryFile file;
  ASSERT_TRUE(file.create(AT_FDCWD, path().string(), 0600));

  EXPECT_TRUE(file.putInPlace(false));

  EXPECT_TRUE(fs::exists(path()));
}

TEST_F(TemporaryFiles, FollowTheUmask) {
  const mode_t old = ::umask(027);
  TemporaryFile file;
  make(file);
  ::umask(old);
  ASSERT_TRUE(file.putInPlace(false));

  EXPECT_EQ(fs::status(path()).permissions(), fs::perms{0640});
}

class AbandonedFiles : public TemporaryFiles {
 protected:
  /// A file of that name that was written long ago.
  fs::path old(const std::string& name) const {
    const fs::path made = folder_ / name;
    test::writeFile(made, "x");
    fs::last_write_time(made, fs::file_time_type::clock::now() - std::chrono::hours(25));
    return made;
  }
  void remove() const { opc::removeAbandonedFiles(open_.get(), "a.txt"); }
};

TEST_F(AbandonedFiles, AreRemoved) {
  const fs::path left = old(".a.txt.abcdef.tmp");

  remove();

  EXPECT_FALSE(fs::exists(left));
}

TEST_F(AbandonedFiles, AreNeitherNewNorLocked) {
  test::writeFile(folder_ / ".a.txt.ABCDEF.tmp", "x");
  const fs::path locked = old(".a.txt.abcdef.tmp");
  const opc::FileDescriptor holder(::open(locked.c_str(), O_RDONLY));
  ASSERT_EQ(::flock(holder.get(), LOCK_EX), 0);

  remove();

  EXPECT_EQ(names(), 2u);
}

TEST_F(AbandonedFiles, AreThoseOfTheSameFile) {
  for (const char* name : {".b.txt.abcdef.tmp", "a.txt", ".a.txt.tmp", ".a.txt.ab_def.tmp",
                           "xa.txt.abcdef.tmp", ".a.txt2.abcdef.tmp"}) {
    old(name);
  }

  remove();

  EXPECT_EQ(names(), 6u);
}

}  // namespace
