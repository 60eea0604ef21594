// SPDX-License-Identifier: MIT
#include "addon/gallery/detail/ListingPlan.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using addon::gallery::PageFile;
using addon::gallery::detail::FolderTree;
using addon::gallery::detail::ListingPlan;
using addon::gallery::detail::TreeNode;

std::string childrenOf(const FolderTree& tree, const TreeNode& node) {
  std::string names;
  for (const std::size_t child : node.children) {
    names.append(tree[child].name).append(tree[child].isFolder ? "/ " : " ");
  }
  return names;
}

std::size_t entriesListed(const FolderTree& tree, const ListingPlan& plan) {
  std::size_t entries = 0;
  for (std::size_t i = 0; i < tree.size(); ++i) entries += plan.listed(i);
  return entries;
}

TEST(FolderTree, AddsUpWhatIsBelowAFolder) {
  const std::vector<PageFile> files{
      {"a", 1}, {"b/c", 2}, {"b/d/e", 4}, {"b/f", 8}, {"g/h", 0, true}};

  const FolderTree tree(files);

  EXPECT_EQ(tree.root().size, 15u);
  EXPECT_EQ(tree.root().files, 4u);
  EXPECT_EQ(childrenOf(tree, tree.root()), "b/ g/ a ");
  const TreeNode& b = tree[tree.root().children[0]];
  EXPECT_EQ(b.size, 14u);
  EXPECT_EQ(b.files, 3u);
  EXPECT_EQ(childrenOf(tree, b), "d/ c f ");
  EXPECT_EQ(childrenOf(tree, tree[tree.root().children[1]]), "h/ ");
}

TEST(FolderTree, FoldersWithTheSameNameStayApart) {
  const std::vector<PageFile> files{{"a/x/f", 1}, {"b/x/f", 2}, {"x/f", 4}};

  const FolderTree tree(files);

  EXPECT_EQ(childrenOf(tree, tree.root()), "a/ b/ x/ ");
  EXPECT_EQ(tree.size(), 9u);
  EXPECT_EQ(tree[tree.root().children[1]].size, 2u);
}

TEST(FolderTree, WithoutFilesIsJustARoot) {
  const std::vector<PageFile> files;

  const FolderTree tree(files);

  EXPECT_EQ(tree.size(), 1u);
  EXPECT_TRUE(ListingPlan(tree).isComplete());
}

TEST(ListingPlan, ListsAllOfAFewThousandFiles) {
  std::vector<PageFile> files;
  for (int i = 0; i < 4000; ++i) files.push_back({"d/" + std::to_string(i), 1});
  const FolderTree tree(files);

  const ListingPlan plan(tree);

  EXPECT_TRUE(plan.isComplete());
  EXPECT_EQ(entriesListed(tree, plan), 4001u);
}

TEST(ListingPlan, LimitsThePageOfAHugePackage) {
  std::vector<PageFile> files;
  for (int folder = 0; folder < 100; ++folder) {
    for (int i = 0; i < 1000; ++i) {
      files.push_back({std::to_string(folder) + "/" + std::to_string(i), 1});
    }
  }
  const FolderTree tree(files);

  const ListingPlan plan(tree);

  EXPECT_FALSE(plan.isComplete());
  EXPECT_EQ(plan.listed(0), 100u);
  EXPECT_EQ(plan.listed(tree.root().children[0]), ListingPlan::kEntriesOfFolder);
  EXPECT_EQ(entriesListed(tree, plan), ListingPlan::kEntries);
}

TEST(ListingPlan, LimitsTheDepth) {
  std::string path;
  for (int i = 0; i < 2000; ++i) path += "d/";
  const std::vector<PageFile> files{{path + "f", 1}};
  const FolderTree tree(files);

  const ListingPlan plan(tree);

  EXPECT_FALSE(plan.isComplete());
  EXPECT_EQ(entriesListed(tree, plan), ListingPlan::kDepth);
}

}  // namespace
