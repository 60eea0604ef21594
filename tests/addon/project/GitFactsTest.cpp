// SPDX-License-Identifier: MIT
#include "addon/project/GitFacts.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "tests/support/TemporaryFolder.h"

namespace {

using addon::project::GitFacts;
using addon::project::newestVersionTag;
using addon::project::readGitFacts;

TEST(GitFacts, TheNewestTagIsTheOneWithTheHighestNumbers) {
  EXPECT_EQ(newestVersionTag({"v1.9", "1.10", "v1.2.3"}), "1.10");
  EXPECT_EQ(newestVersionTag({"1.2", "1.2.0"}), "1.2.0");
  EXPECT_EQ(newestVersionTag({"0.0", "00.000"}), "0.0");
  EXPECT_EQ(newestVersionTag({"1.99999999999999999999", "1.100000000000000000000"}),
            "1.100000000000000000000");
}

TEST(GitFacts, OtherTagsAreIgnored) {
  EXPECT_EQ(newestVersionTag({"1", "v2", "1.2.3.4", "1.2-rc1", "release-9.9", "v", "", "1..2",
                              "1.2.", ".1.2", "vv1.2", "V1.2"}),
            "");
}

/// A folder that the test's own git settings do not reach.
class ReadGitFacts : public testing::Test {
 protected:
  ReadGitFacts() {
    ::setenv("HOME", folder_.path().c_str(), 1);
    ::setenv("GIT_CONFIG_NOSYSTEM", "1", 1);
    ::setenv("XDG_CONFIG_HOME", folder_.path().c_str(), 1);
    ::setenv("GIT_CEILING_DIRECTORIES", folder_.path().parent_path().c_str(), 1);
  }
  ~ReadGitFacts() override { ::setenv("PATH", path_.c_str(), 1); }

  std::string place() const { return folder_.path().string(); }
  void git(const std::string& words) const {
    const std::string line = "git -C '" + place() + "' " + words + " > /dev/null 2>&1";
    ASSERT_EQ(std::system(line.c_str()), 0) << line;
  }
  void makeRepository() const {
    git("init -q");
    git("-c user.name=a -c user.email=b commit -q --allow-empty -m x");
  }

  test::TemporaryFolder folder_;
  std::string path_ = std::getenv("PATH");
};

TEST_F(ReadGitFacts, GivesNoVersionWithoutARepository) {
  const GitFacts facts = readGitFacts(place());

  EXPECT_EQ(facts.version, "");
  EXPECT_EQ(facts.userName, "");
}

TEST_F(ReadGitFacts, GivesTheNewestTagAndTheUser) {
  makeRepository();
  git("tag v1.9");
  git("-c user.name=a -c user.email=b tag -a -m x v1.10");
  git("tag latest");
  git("config user.name 'Ada \"L\" Lind'");
  git("config user.email ada@example.org");

  const GitFacts facts = readGitFacts(place());

  EXPECT_EQ(facts.version, "1.10");
  EXPECT_EQ(facts.tag, "v1.10");
  EXPECT_FALSE(facts.isBelowTop);
  EXPECT_EQ(facts.userName, "Ada \"L\" Lind");
  EXPECT_EQ(facts.userEmail, "ada@example.org");
}

TEST_F(ReadGitFacts, KnowsThatAFolderIsBelowTheTopOfItsRepository) {
  makeRepository();
  git("tag 2.0");
  std::filesystem::create_directory(folder_ / "-x");

  const GitFacts facts = readGitFacts(place() + "/-x");

  EXPECT_EQ(facts.version, "2.0");
  EXPECT_TRUE(facts.isBelowTop);
}

TEST_F(ReadGitFacts, IgnoresTheEnvironment) {
  makeRepository();
  git("tag 2.0");
  std::filesystem::create_directory(folder_ / "other");
  test::TemporaryFolder elsewhere;
  ::setenv("GIT_DIR", (folder_ / ".git").c_str(), 1);

  const GitFacts facts = readGitFacts(elsewhere.path().string());
  ::unsetenv("GIT_DIR");

  EXPECT_EQ(facts.version, "");
}

TEST_F(ReadGitFacts, GivesNothingWithoutGit) {
  makeRepository();
  git("tag 2.0");
  ::setenv("PATH", "/nowhere", 1);

  const GitFacts facts = readGitFacts(place());

  EXPECT_EQ(facts.version, "");
}

TEST_F(ReadGitFacts, GivesNothingIfTheOutputOfGitIsEndless) {
  const auto git = folder_ / "bin/git";
  std::filesystem::create_directory(git.parent_path());
  test::writeFile(git, "#!/bin/sh\nexec /usr/bin/yes v1.0\n");
  std::filesystem::permissions(git, std::filesystem::perms::owner_all);
  ::setenv("PATH", git.parent_path().c_str(), 1);

  const GitFacts facts = readGitFacts(place());

  EXPECT_EQ(facts.version, "");
  EXPECT_EQ(facts.userName, "");
}

TEST_F(ReadGitFacts, GivesNothingForABrokenRepository) {
  makeRepository();
  git("tag 2.0");
  test::writeFile(folder_ / ".git/config", "[broken");

  const GitFacts facts = readGitFacts(place());

  EXPECT_EQ(facts.version, "");
  EXPECT_EQ(facts.userName, "");
}

}  // namespace
