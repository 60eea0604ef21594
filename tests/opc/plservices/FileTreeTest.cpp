// SPDX-License-Identifier: MIT
#include "opc/plservices/FileTree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "opc/Text.h"

namespace {

using opc::plservices::FileTree;
using opc::plservices::NodeId;
using opc::plservices::TreeWalk;
using testing::ElementsAre;
using testing::IsEmpty;

// Adds a file with the folders above it.
NodeId addPath(FileTree& tree, std::string_view path, opc::model::PartId part = 0) {
  FileTree::Reach reach = tree.reach(path);
  for (auto slash = reach.rest.find('/'); slash != std::string_view::npos;
       slash = reach.rest.find('/')) {
    reach.node = tree.addFolder(reach.node, reach.rest.substr(0, slash));
    reach.rest.remove_prefix(slash + 1);
  }
  return tree.addFile(reach.node, reach.rest, part);
}

std::vector<std::string> walk(FileTree& tree, NodeId top = FileTree::kRoot) {
  std::vector<std::string> paths;
  for (TreeWalk walk(tree, top); walk.next();) paths.emplace_back(walk.path());
  return paths;
}

TEST(FileTree, ANewOneHasARootAndNothingElse) {
  FileTree tree;

  EXPECT_EQ(tree.size(), 1u);
  EXPECT_FALSE(tree.isFile(FileTree::kRoot));
  EXPECT_FALSE(tree.isEmptyFolder(FileTree::kRoot));
  EXPECT_EQ(tree.path(FileTree::kRoot), "");
  EXPECT_THAT(walk(tree), IsEmpty());
}

TEST(FileTree, AFileIsFoundByItsPath) {
  FileTree tree;
  const NodeId file = addPath(tree, "a/b/c.m", 7);

  EXPECT_EQ(tree.find("a/b/c.m"), file);
  EXPECT_TRUE(tree.isFile(file));
  EXPECT_EQ(tree.part(file), 7u);
  EXPECT_EQ(tree.name(file), "c.m");
  EXPECT_EQ(tree.path(file), "a/b/c.m");
}

TEST(FileTree, WhatIsNotThereIsNotFound) {
  FileTree tree;
  addPath(tree, "a/b");

  EXPECT_EQ(tree.find("a/c"), FileTree::kNone);
  EXPECT_EQ(tree.find("b"), FileTree::kNone);
  EXPECT_EQ(tree.find("A"), FileTree::kNone);
  EXPECT_EQ(tree.find("a/b/c"), FileTree::kNone);
}

TEST(FileTree, APathReachesAsFarAsItExists) {
  FileTree tree;
  addPath(tree, "a/b/c.m");

  const auto [node, rest] = tree.reach("a/b/x/y");

  EXPECT_EQ(tree.path(node), "a/b");
  EXPECT_EQ(rest, "x/y");
}

TEST(FileTree, AFolderIsEmptyUntilSomethingIsInIt) {
  FileTree tree;
  const NodeId folder = tree.addFolder(FileTree::kRoot, "a");
  EXPECT_TRUE(tree.isEmptyFolder(folder));

  tree.addFolder(folder, "b");

  EXPECT_FALSE(tree.isEmptyFolder(folder));
}

TEST(FileTree, AWalkGivesFilesAndEmptyFoldersDepthFirst) {
  FileTree tree;
  addPath(tree, "c.m");
  addPath(tree, "a/x.m");
  tree.addFolder(tree.find("a"), "b");

  EXPECT_THAT(walk(tree), ElementsAre("a/b", "a/x.m", "c.m"));
}

TEST(FileTree, AWalkFromAFolderStaysBelowIt) {
  FileTree tree;
  for (const char* path : {"a/x", "b/c/y", "b/z", "c"}) addPath(tree, path);

  EXPECT_THAT(walk(tree, tree.find("b")), ElementsAre("b/c/y", "b/z"));
}

TEST(FileTree, AWalkFromALeafGivesIt) {
  FileTree tree;
  addPath(tree, "a/x");
  addPath(tree, "a/y");
  tree.addFolder(FileTree::kRoot, "e");

  EXPECT_THAT(walk(tree, tree.find("a/x")), ElementsAre("a/x"));
  EXPECT_THAT(walk(tree, tree.find("e")), ElementsAre("e"));
}

TEST(FileTree, AWalkThatHasEndedStaysAtItsEnd) {
  FileTree tree;
  addPath(tree, "a/x");
  TreeWalk walk(tree);
  while (walk.next()) {
  }

  EXPECT_FALSE(walk.next());
}

TEST(FileTree, ChildrenComeInTheOrderOfCodeUnitsNotOfBytes) {
  FileTree tree;
  const std::string fullwidth = "\xef\xbd\x81";   // U+FF41: one unit, FF41
  const std::string emoji = "\xf0\x9f\x98\x80";   // U+1F600: units D83D DE00
  const std::string privateUse = "\xee\x80\x80";  // U+E000
  const std::string hangul = "\xed\x9f\xbb";      // U+D7FB
  const std::string last = "\xf4\x8f\xbf\xbd";    // U+10FFFD: units DBFF DFFD
  for (const auto& name : {fullwidth, last, privateUse, emoji, hangul}) {
    addPath(tree, name + ".m");
  }

  EXPECT_THAT(walk(tree), ElementsAre(hangul + ".m", emoji + ".m", last + ".m", privateUse + ".m",
                                      fullwidth + ".m"));
}

TEST(FileTree, UpperCaseComesBeforeLowerCaseAndAPrefixBeforeWhatExtendsIt) {
  FileTree tree;
  for (const char* path : {"b", "ab", "a", "B", "a.m", "a b"}) addPath(tree, path);

  EXPECT_THAT(walk(tree), ElementsAre("B", "a", "a b", "a.m", "ab", "b"));
}

TEST(FileTree, AChildAddedAfterAWalkTakesItsPlaceInTheOrder) {
  FileTree tree;
  addPath(tree, "a");
  addPath(tree, "c");
  walk(tree);

  addPath(tree, "b");

  EXPECT_THAT(walk(tree), ElementsAre("a", "b", "c"));
}

TEST(FileTree, OrderOfRandomNamesIsThatOfTheirCodeUnits) {
  const std::vector<std::string> pieces{
      "a", "B", "0", "\xc3\xa9", "\xee\x80\x80", "\xef\xbf\xbd", "\xf0\x9f\x98\x80", "_"};
  std::mt19937 random(20240521);
  FileTree tree;
  std::vector<std::string> expected;
  for (int i = 0; i < 3000; ++i) {
    std::string name = "common";
    for (auto n = random() % 14; n != 0; --n) name += pieces[random() % pieces.size()];
    if (tree.find(name) != FileTree::kNone) continue;
    addPath(tree, name);
    expected.push_back(name);
  }

  std::sort(expected.begin(), expected.end(),
            [](const auto& a, const auto& b) { return opc::fromUtf8(a) < opc::fromUtf8(b); });
  EXPECT_EQ(walk(tree), expected);
}

TEST(FileTree, ManyFilesOfOneFolderAreAllFound) {
  FileTree tree;
  for (int i = 0; i < 100'000; ++i) addPath(tree, "folder/file" + std::to_string(i), 1);

  EXPECT_EQ(tree.size(), 100'002u);
  EXPECT_EQ(tree.name(tree.find("folder/file99999")), "file99999");
  EXPECT_EQ(walk(tree).size(), 100'000u);
}

TEST(FileTree, TenThousandLevelsAreWalkedInOneGo) {
  FileTree tree;
  NodeId folder = FileTree::kRoot;
  for (int level = 0; level < 10'000; ++level) {
    tree.addFile(folder, "z", 0);
    folder = tree.addFolder(folder, "d");
  }

  std::vector<std::size_t> lengths;
  for (TreeWalk walk(tree); walk.next();) lengths.push_back(walk.path().size());

  // The empty folder at the bottom, then the files from there upwards.
  ASSERT_EQ(lengths.size(), 10'001u);
  EXPECT_EQ(lengths[0], 19'999u);
  for (std::size_t i = 1; i < lengths.size(); ++i) {
    ASSERT_EQ(lengths[i], 2 * (10'000 - i) + 1);
  }
}

TEST(FileTree, WhatIsRemovedIsGoneWithAllBelowIt) {
  FileTree tree;
  for (const char* path : {"a/b/x", "a/b/y", "a/z", "c"}) addPath(tree, path);
  const NodeId gone = tree.find("a/b/y");

  tree.remove(tree.find("a/b"));

  EXPECT_THAT(walk(tree), ElementsAre("a/z", "c"));
  EXPECT_EQ(tree.find("a/b/y"), FileTree::kNone);
  EXPECT_TRUE(tree.isRemoved(gone));
  EXPECT_FALSE(tree.isRemoved(tree.find("a/z")));
  EXPECT_EQ(tree.childCount(tree.find("a")), 1u);
}

TEST(FileTree, AFolderWithoutItsLastChildIsEmpty) {
  FileTree tree;
  addPath(tree, "a/x");
  const NodeId folder = tree.find("a");

  tree.remove(tree.find("a/x"));

  EXPECT_TRUE(tree.isEmptyFolder(folder));
  EXPECT_FALSE(tree.hasChildren(folder));
  EXPECT_EQ(tree.firstChild(folder), FileTree::kNone);
  EXPECT_THAT(walk(tree), ElementsAre("a"));
}

TEST(FileTree, AFileRemovedBeforeAnyLookUpIsNotFound) {
  FileTree tree;
  const NodeId folder = tree.addFolder(FileTree::kRoot, "a");
  tree.remove(tree.addFile(folder, "x", 1));
  const NodeId other = tree.addFile(folder, "x", 2);

  EXPECT_EQ(tree.find("a/x"), other);
  tree.remove(other);
  EXPECT_EQ(tree.find("a/x"), FileTree::kNone);
}

TEST(FileTree, FilesAddedAfterALookUpAreFound) {
  FileTree tree;
  const NodeId first = addPath(tree, "a/x");
  EXPECT_EQ(tree.find("a/x"), first);
  EXPECT_EQ(tree.find("a/y"), FileTree::kNone);
  const NodeId folder = tree.find("a");
  std::vector<NodeId> added;
  for (int i = 0; i < 100; ++i) added.push_back(tree.addFile(folder, "y" + std::to_string(i), 1));

  EXPECT_EQ(tree.find("a/x"), first);
  for (std::size_t i = 0; i < added.size(); ++i) {
    EXPECT_EQ(tree.find("a/y" + std::to_string(i)), added[i]);
  }
}

TEST(FileTree, ARemovedFolderDoesNotCountAsEmpty) {
  FileTree tree;
  const NodeId folder = tree.addFolder(FileTree::kRoot, "a");

  tree.remove(folder);

  EXPECT_FALSE(tree.isEmptyFolder(folder));
  EXPECT_THAT(walk(tree), IsEmpty());
}

TEST(FileTree, ASubtreeHasFoldersBeforeWhatIsInThemAndNothingRemoved) {
  FileTree tree;
  for (const char* path : {"a/b/x", "a/b/y", "a/z", "c"}) addPath(tree, path);
  tree.remove(tree.find("a/b/x"));

  const NodeId a = tree.find("a");
  EXPECT_THAT(tree.subtree(a),
              testing::AllOf(testing::UnorderedElementsAre(a, tree.find("a/b"), tree.find("a/b/y"),
                                                           tree.find("a/z")),
                             testing::Contains(a)));
  EXPECT_EQ(tree.subtree(a).front(), a);
  EXPECT_EQ(tree.subtree(a).back(), tree.find("a/b/y"));
}

TEST(FileTree, RemovingAndAddingAtRandomAgreesWithASet) {
  std::mt19937 random(7);
  FileTree tree;
  std::set<std::string> expected;
  for (int i = 0; i < 4000; ++i) {
    const std::string folder = "f" + std::to_string(random() % 5);
    const std::string path = folder + "/n" + std::to_string(random() % 40);
    const NodeId node = tree.find(path);
    ASSERT_EQ(node != FileTree::kNone, expected.contains(path)) << path;
    if (node == FileTree::kNone) {
      addPath(tree, path);
      expected.insert(path);
    } else {
      tree.remove(node);
      expected.erase(path);
      if (!tree.hasChildren(tree.find(folder))) tree.remove(tree.find(folder));
    }
    if (i % 50 != 0) continue;
    const std::vector<std::string> paths = walk(tree);
    ASSERT_TRUE(std::equal(paths.begin(), paths.end(), expected.begin(), expected.end())) << i;
  }
}

}  // namespace
