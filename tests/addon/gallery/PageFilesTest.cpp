// SPDX-License-Identifier: MIT
#include "addon/gallery/PageFiles.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "addon/gallery/detail/ListingPlan.h"
#include "tests/addon/gallery/TreeOfFiles.h"

namespace {

using addon::gallery::PageFiles;
using addon::gallery::detail::ListingPlan;

std::string childrenOf(const PageFiles& files, PageFiles::NodeId folder) {
  std::string names;
  for (const auto child : files.firstChildren(folder, files.nodes())) {
    names.append(files.tree().name(child)).append(files.tree().isFile(child) ? " " : "/ ");
  }
  return names;
}

std::size_t entriesListed(const PageFiles& files, const ListingPlan& plan) {
  std::size_t entries = 0;
  for (PageFiles::NodeId i = 0; i < files.endOfIds(); ++i) entries += plan.listed(i).size();
  return entries;
}

TEST(PageFiles, AddsUpWhatIsBelowAFolder) {
  TreeOfFiles tree({{"a", 1}, {"b/c", 2}, {"b/d/e", 4}, {"b/f", 8}, {"g/h", 0, true}});

  const PageFiles files = tree.files();

  EXPECT_EQ(files.totals(PageFiles::kRoot).size, 15u);
  EXPECT_EQ(files.totals(PageFiles::kRoot).files, 4u);
  EXPECT_EQ(files.emptyFolders(), 1u);
  EXPECT_EQ(childrenOf(files, PageFiles::kRoot), "b/ g/ a ");
  const auto top = files.firstChildren(PageFiles::kRoot, 2);
  EXPECT_EQ(files.totals(top[0]).size, 14u);
  EXPECT_EQ(files.totals(top[0]).files, 3u);
  EXPECT_EQ(childrenOf(files, top[0]), "d/ c f ");
  EXPECT_EQ(childrenOf(files, top[1]), "h/ ");
}

TEST(PageFiles, FoldersWithTheSameNameStayApart) {
  TreeOfFiles tree({{"a/x/f", 1}, {"b/x/f", 2}, {"x/f", 4}});

  const PageFiles files = tree.files();

  EXPECT_EQ(childrenOf(files, PageFiles::kRoot), "a/ b/ x/ ");
  EXPECT_EQ(files.nodes(), 9u);
  EXPECT_EQ(files.totals(files.firstChildren(PageFiles::kRoot, 2)[1]).size, 2u);
}

TEST(PageFiles, WithoutFilesIsJustARoot) {
  TreeOfFiles tree({});

  const PageFiles files = tree.files();

  EXPECT_EQ(files.nodes(), 1u);
  EXPECT_TRUE(files.empty());
  EXPECT_TRUE(ListingPlan(files).isComplete());
}

TEST(PageFiles, WhatWasRemovedDoesNotCount) {
  opc::plservices::FileTree tree;
  tree.addFile(PageFiles::kRoot, "a", 0);
  tree.remove(tree.addFile(tree.addFolder(PageFiles::kRoot, "b"), "c", 0));

  const PageFiles files(tree, [](opc::model::PartId) { return std::uint64_t{5}; });

  EXPECT_EQ(files.nodes(), 3u);
  EXPECT_EQ(files.emptyFolders(), 1u);
  EXPECT_EQ(files.totals(PageFiles::kRoot).size, 5u);
}

TEST(ListingPlan, ListsAllOfAFewThousandFiles) {
  std::vector<PageFile> entries;
  entries.reserve(4000);
  for (int i = 0; i < 4000; ++i) entries.push_back({"d/" + std::to_string(i), 1});
  TreeOfFiles tree(entries);
  const PageFiles files = tree.files();

  const ListingPlan plan(files);

  EXPECT_TRUE(plan.isComplete());
  EXPECT_EQ(entriesListed(files, plan), 4001u);
}

TEST(ListingPlan, LimitsThePageOfAHugePackage) {
  std::vector<PageFile> entries;
  for (int folder = 0; folder < 100; ++folder) {
    for (int i = 0; i < 1000; ++i) {
      entries.push_back({std::to_string(folder) + "/" + std::to_string(i), 1});
    }
  }
  TreeOfFiles tree(entries);
  const PageFiles files = tree.files();

  const ListingPlan plan(files);

  EXPECT_FALSE(plan.isComplete());
  EXPECT_EQ(plan.listed(PageFiles::kRoot).size(), 100u);
  EXPECT_EQ(plan.listed(plan.listed(PageFiles::kRoot)[0]).size(), ListingPlan::kEntriesOfFolder);
  EXPECT_EQ(entriesListed(files, plan), ListingPlan::kEntries);
}

TEST(ListingPlan, LimitsTheDepth) {
  std::string path;
  for (int i = 0; i < 2000; ++i) path += "d/";
  const std::vector<PageFile> entries{{path + "f", 1}};
  TreeOfFiles tree(entries);
  const PageFiles files = tree.files();

  const ListingPlan plan(files);

  EXPECT_FALSE(plan.isComplete());
  EXPECT_EQ(entriesListed(files, plan), ListingPlan::kDepth);
}

}  // namespace
