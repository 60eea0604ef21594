// SPDX-License-Identifier: MIT
#include "addon/build/TreeWalk.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "addon/build/BuildError.h"
#include "tests/support/TemporaryFolder.h"

namespace {

namespace fs = std::filesystem;
using test::writeFile;
using Paths = std::vector<std::string>;

class TreeWalk : public testing::Test {
 protected:
  TreeWalk() { fs::create_directory(root_); }

  void file(const std::string& path) {
    fs::create_directories((root_ / path).parent_path());
    writeFile(root_ / path, "x");
  }

  Paths walk() const {
    Paths paths;
    for (const auto& entry : addon::build::walkTree(root_.string(), options_)) {
      paths.push_back(entry.path + (entry.isFolder ? "/" : ""));
    }
    return paths;
  }

  std::string error() const {
    try {
      walk();
    } catch (const addon::build::BuildError& failure) {
      return failure.what();
    }
    return "no error";
  }

  test::TemporaryFolder folder_;
  fs::path root_ = folder_ / "root";
  addon::build::TreeWalkOptions options_;
};

TEST_F(TreeWalk, GoesDepthFirstInOrderOfCodeUnits) {
  for (const char* path : {"b.m", "a/z", "a/b/c", "a.m", "B", "\xF0\x9F\x8C\x8A", "\xEF\xBF\xBD"}) {
    file(path);
  }
  fs::create_directories(root_ / "e/f");

  EXPECT_EQ(walk(),
            (Paths{"B", "a/b/c", "a/z", "a.m", "b.m", "e/f/", "\xF0\x9F\x8C\x8A", "\xEF\xBF\xBD"}));
}

TEST_F(TreeWalk, LeavesOutWhatIsExcludedAndDoesNotLookIntoIt) {
  file("a.m");
  file("b.log");
  file("sub/keep.m");
  ASSERT_EQ(::mkfifo((root_ / "sub/pipe").c_str(), 0600), 0);
  options_.excludes.add("*.log");
  options_.excludes.add("sub/");
  Paths excluded;
  options_.onExcluded = [&](const std::string& path, bool) { excluded.push_back(path); };

  EXPECT_EQ(walk(), (Paths{"a.m"}));
  EXPECT_EQ(excluded.size(), 2u);
}

TEST_F(TreeWalk, WhatIsNotIncludedIsNotLookedAt) {
  file("a.m");
  file("sub/b.m");
  file("sub/b.txt");
  fs::create_directory(root_ / "empty");
  fs::create_symlink("nowhere", root_ / "dangling");
  ASSERT_EQ(::mkfifo((root_ / "sub/pipe").c_str(), 0600), 0);
  options_.place = "lib";
  Paths asked;
  options_.includes = [&](const std::string& path, bool isFolder) {
    asked.push_back(path + (isFolder ? "/" : ""));
    return path.ends_with(".m");
  };

  EXPECT_EQ(walk(), (Paths{"a.m", "sub/b.m"}));
  EXPECT_EQ(asked, (Paths{"lib/a.m", "lib/dangling", "lib/empty/", "lib/sub/b.m", "lib/sub/b.txt",
                          "lib/sub/pipe"}));
}

TEST_F(TreeWalk, LinksMayLeadIntoTheProjectThatTheFolderIsOf) {
  file("a.m");
  fs::create_directory(folder_ / "common");
  writeFile(folder_ / "common/b.m", "x");
  fs::create_symlink("../common", root_ / "lib");
  options_.project = folder_.path().string();

  EXPECT_EQ(walk(), (Paths{"a.m", "lib/b.m"}));
  options_.project = (folder_ / "com").string();
  EXPECT_EQ(error(), "cannot follow the link '" + (root_ / "lib").string() +
                         "': it leads out of the folder");
}

TEST_F(TreeWalk, PatternsCountForPathsInThePackage) {
  file("a/x.m");
  file("b/x.m");
  options_.place = "lib/kit";
  options_.excludes.add("/lib/kit/a/");
  options_.excludes.add("/b");
  Paths excluded;
  options_.onExcluded = [&](const std::string& path, bool) { excluded.push_back(path); };

  EXPECT_EQ(walk(), Paths{"b/x.m"});
  EXPECT_EQ(excluded, Paths{"lib/kit/a"});
}

TEST_F(TreeWalk, AFolderIsEmptyOnlyWhenNothingLiesInIt) {
  file("full/a.log");
  fs::create_directory(root_ / "empty");
  options_.excludes.add("*.log");

  EXPECT_EQ(walk(), (Paths{"empty/"}));
}

TEST_F(TreeWalk, FollowsLinksThatStayInside) {
  file("real/a.m");
  fs::create_symlink("real/a.m", root_ / "link.m");
  fs::create_symlink("real", root_ / "other");

  EXPECT_EQ(walk(), (Paths{"link.m", "other/a.m", "real/a.m"}));
}

TEST_F(TreeWalk, RefusesLinksThatLeadOutUnlessTold) {
  writeFile(folder_ / "outside.m", "x");
  fs::create_symlink("../outside.m", root_ / "link.m");

  EXPECT_EQ(error(), "cannot follow the link '" + (root_ / "link.m").string() +
                         "': it leads out of the folder");

  options_.followsOutside = true;
  EXPECT_EQ(walk(), (Paths{"link.m"}));
}

TEST_F(TreeWalk, RefusesAFolderWhoseNameOnlyBeginsLikeTheRoot) {
  fs::create_directory(folder_ / "root2");
  fs::create_symlink("../root2", root_ / "link");

  EXPECT_NE(error().find("it leads out of the folder"), std::string::npos);
}

TEST_F(TreeWalk, RefusesDanglingLinksAndCircles) {
  fs::create_symlink("nowhere", root_ / "link");
  EXPECT_NE(error().find("cannot follow the link"), std::string::npos);
  fs::remove(root_ / "link");

  fs::create_symlink("link", root_ / "link");
  EXPECT_NE(error().find("cannot follow the link"), std::string::npos);
  fs::remove(root_ / "link");

  fs::create_directories(root_ / "a/b");
  fs::create_symlink("../../a", root_ / "a/b/up");
  EXPECT_EQ(error(), "cannot follow the link '" + (root_ / "a/b/up").string() +
                         "': it leads to a folder that contains it");
}

TEST_F(TreeWalk, RefusesCirclesOverSeveralLinks) {
  file("a/x");
  file("b/x");
  fs::create_symlink("../b", root_ / "a/link");
  fs::create_symlink("../a", root_ / "b/link");

  EXPECT_NE(error().find("it leads to a folder that contains it"), std::string::npos);
}

TEST_F(TreeWalk, RefusesWhatIsNeitherFileNorFolder) {
  ASSERT_EQ(::mkfifo((root_ / "pipe").c_str(), 0600), 0);

  EXPECT_EQ(error(),
            "cannot pack '" + (root_ / "pipe").string() + "': it is neither a file nor a folder");
}

TEST_F(TreeWalk, RefusesNamesThatAreNotUtf8UnlessExcluded) {
  file("caf\xE9.m");
  EXPECT_NE(error().find("the name is not UTF-8"), std::string::npos);

  options_.excludes.add("*.m");
  EXPECT_EQ(walk(), Paths{});
}

TEST_F(TreeWalk, LeavesOutTheOutputByWhateverName) {
  file("out.kraddon");
  file("a.m");
  fs::create_hard_link(root_ / "out.kraddon", root_ / "second");
  fs::create_symlink("out.kraddon", root_ / "third");
  options_.leftOut = {*opc::identityOf((root_ / "out.kraddon").string())};

  EXPECT_EQ(walk(), (Paths{"a.m"}));
}

TEST_F(TreeWalk, SaysWhichFolderIsMissing) {
  fs::remove(root_);

  EXPECT_EQ(error(), "cannot read the folder '" + root_.string() + "': No such file or directory");
}

TEST_F(TreeWalk, DepthCostsNoStack) {
  std::string path;
  for (int i = 0; i < 1000; ++i) path += "d/";
  fs::create_directories(root_ / path);

  EXPECT_EQ(walk(), (Paths{path}));
}

}  // namespace
