// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/opc/plservices/ScratchTree.h"

// Moving files and folders.

namespace {

using test::errorOf;
using test::ScratchTree;
using testing::ElementsAre;
using testing::HasSubstr;

using OpenMode = opc::interfaces::OpenMode;

void move(ScratchTree& tree, std::string_view from, std::string_view to) {
  tree.files.move(*tree.files.find(from), to);
}

TEST(FileSystemMove, AFileKeepsItsContentUnderTheNewPath) {
  ScratchTree tree;
  tree.addFile("a.m", "content");
  tree.addFile("b.m");
  tree.reopen(OpenMode::Modify);

  move(tree, "a.m", "/new/place.m");
  tree.reopen();

  EXPECT_THAT(tree.list(), ElementsAre("b.m", "new/place.m"));
  EXPECT_EQ(tree.content("new/place.m"), "content");
  EXPECT_FALSE(tree.hasPart(u"/files/a.m"));
}

TEST(FileSystemMove, AFolderTakesEverythingWithItAndTheFolderAboveStays) {
  ScratchTree tree;
  for (const char* path : {"top/a/x", "top/a/b/y.", "ab"}) tree.addFile(path, path);
  tree.addFolder("top/a/void");
  tree.reopen(OpenMode::Modify);

  move(tree, "top/a", "c/d");
  tree.reopen();

  EXPECT_THAT(tree.list(), ElementsAre("ab", "c/d/b/y.", "c/d/void", "c/d/x", "top"));
  EXPECT_EQ(tree.content("c/d/b/y."), "top/a/b/y.");
}

TEST(FileSystemMove, AnotherCaseOfANameNeedsNoTable) {
  ScratchTree tree;
  tree.addFile("lib/a.m", "x");
  tree.reopen(OpenMode::Modify);

  move(tree, "lib", "LIB");
  tree.reopen();

  EXPECT_THAT(tree.list(), ElementsAre("LIB/a.m"));
  EXPECT_TRUE(tree.hasPart(u"/files/LIB/a.m"));
  EXPECT_FALSE(tree.hasPart(u"/metadata/fileTree.xml"));
}

TEST(FileSystemMove, ToATakenPathOrBelowItselfChangesNothing) {
  ScratchTree tree;
  for (const char* path : {"a/x", "b"}) tree.addFile(path);
  tree.reopen(OpenMode::Modify);

  EXPECT_THAT(errorOf([&] { move(tree, "b", "a/x"); }), HasSubstr("path 'a/x' already exists"));
  EXPECT_THAT(errorOf([&] { move(tree, "b", "b"); }), HasSubstr("path 'b' already exists"));
  EXPECT_THAT(errorOf([&] { move(tree, "a", "a/c"); }), HasSubstr("'a/c' lies below it"));
  EXPECT_THAT(errorOf([&] { move(tree, "a", "b/c"); }), HasSubstr("'b' is a file"));
  EXPECT_THAT(errorOf([&] { move(tree, "", "c"); }), HasSubstr("cannot move the root"));

  EXPECT_THAT(tree.list(), ElementsAre("a/x", "b"));
}

}  // namespace
