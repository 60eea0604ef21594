// SPDX-License-Identifier: MIT
#include "addon/gallery/detail/Treemap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <string>
#include <vector>

#include "tests/addon/gallery/TreeOfFiles.h"

namespace {

using addon::gallery::detail::Box;
using addon::gallery::detail::groupBySize;
using addon::gallery::detail::kMaxFiles;
using addon::gallery::detail::kMaxGroups;
using addon::gallery::detail::squarify;
using addon::gallery::detail::TreemapGroup;

constexpr double kTolerance = 1e-6;

double area(const Box& box) {
  return box.width * box.height;
}

double overlap(const Box& a, const Box& b) {
  const double width = std::min(a.x + a.width, b.x + b.width) - std::max(a.x, b.x);
  const double height = std::min(a.y + a.height, b.y + b.height) - std::max(a.y, b.y);
  return width > 0 && height > 0 ? width * height : 0;
}

double ratio(const Box& box) {
  return std::max(box.width, box.height) / std::min(box.width, box.height);
}

class Squarify : public testing::TestWithParam<std::vector<double>> {};

TEST_P(Squarify, DividesTheFrameInProportionAndWithoutOverlap) {
  const std::vector<double>& sizes = GetParam();
  const Box frame{10, 20, 1040, 420};
  const double total = std::accumulate(sizes.begin(), sizes.end(), 0.0);

  const std::vector<Box> boxes = squarify(sizes, frame);

  ASSERT_EQ(boxes.size(), sizes.size());
  for (std::size_t i = 0; i < boxes.size(); ++i) {
    EXPECT_NEAR(area(boxes[i]), sizes[i] / total * area(frame), area(frame) * kTolerance) << i;
    EXPECT_GE(boxes[i].x, frame.x - kTolerance);
    EXPECT_GE(boxes[i].y, frame.y - kTolerance);
    EXPECT_LE(boxes[i].x + boxes[i].width, frame.x + frame.width + kTolerance);
    EXPECT_LE(boxes[i].y + boxes[i].height, frame.y + frame.height + kTolerance);
    for (std::size_t j = 0; j < i; ++j) {
      EXPECT_LE(overlap(boxes[i], boxes[j]), area(frame) * kTolerance) << i << " and " << j;
    }
  }
}

std::vector<double> powers(double base, int count) {
  std::vector<double> sizes;
  for (double size = 1; count > 0; --count, size /= base) sizes.push_back(size);
  return sizes;
}

INSTANTIATE_TEST_SUITE_P(Sizes, Squarify,
                         testing::Values(std::vector<double>{7},
                                         std::vector<double>{6, 6, 4, 3, 2, 2, 1},
                                         std::vector<double>(200, 1.0),
                                         std::vector<double>{1e18, 1, 1, 0, 0}, powers(2, 60),
                                         powers(1.1, 170)));

TEST(Squarify, MakesBoxesCloseToSquares) {
  const std::vector<Box> boxes = squarify(std::vector<double>(30, 1.0), {0, 0, 1000, 400});

  for (const Box& box : boxes) EXPECT_LT(ratio(box), 2.5);
}

TEST(Squarify, OfNoSizesIsEmpty) {
  EXPECT_TRUE(squarify({}, {0, 0, 10, 10}).empty());
  ASSERT_EQ(squarify({0, 0}, {0, 0, 10, 10}).size(), 2u);
  EXPECT_EQ(area(squarify({0, 0}, {0, 0, 10, 10})[1]), 0);
}

std::uint64_t sizeOf(const std::vector<TreemapGroup>& groups) {
  std::uint64_t size = 0;
  for (const TreemapGroup& group : groups) {
    std::uint64_t cells = 0;
    for (const auto& cell : group.cells) cells += cell.size;
    EXPECT_EQ(cells, group.size) << group.name;
    size += group.size;
  }
  return size;
}

TEST(GroupBySize, PutsEachFileUnderItsFolderAtTheTop) {
  TreeOfFiles tree(
      {{"a/b/c.m", 5}, {"a/d.m", 7}, {"e", 0, true}, {"f.m", 20}, {"g/h.m", 3}, {"i.m", 1}});

  const std::vector<TreemapGroup> groups = groupBySize(tree.files());

  ASSERT_EQ(groups.size(), 3u);
  EXPECT_EQ(groups[0].kind, TreemapGroup::Kind::TopFiles);
  EXPECT_EQ(groups[0].files, 2u);
  EXPECT_EQ(groups[1].name, "a");
  EXPECT_EQ(groups[1].size, 12u);
  ASSERT_EQ(groups[1].cells.size(), 2u);
  EXPECT_EQ(groups[1].cells[0].path, "a/d.m");
  EXPECT_EQ(titleOf(groups[2]), "g/");
  EXPECT_EQ(sizeOf(groups), 36u);
}

TEST(GroupBySize, PutsFilesOfOneSizeInTheOrderOfTheirPaths) {
  TreeOfFiles tree({{"d/a/b", 5}, {"d/a.m", 5}, {"d/c", 5}});

  const std::vector<TreemapGroup> groups = groupBySize(tree.files());

  ASSERT_EQ(groups.size(), 1u);
  ASSERT_EQ(groups[0].cells.size(), 3u);
  EXPECT_EQ(groups[0].cells[0].path, "d/a.m");
  EXPECT_EQ(groups[0].cells[1].path, "d/a/b");
  EXPECT_EQ(groups[0].cells[2].path, "d/c");
}

TEST(GroupBySize, MergesSmallFilesIfThereAreMany) {
  std::vector<PageFile> files;
  std::uint64_t total = 0;
  for (std::uint64_t folder = 0; folder < 50; ++folder) {
    for (std::uint64_t file = 0; file < 100; ++file) {
      files.push_back({std::to_string(folder) + "/" + std::to_string(file), folder + file});
      total += folder + file;
    }
  }

  TreeOfFiles tree(files);
  const std::vector<TreemapGroup> groups = groupBySize(tree.files());

  std::size_t cells = 0;
  std::uint64_t count = 0;
  std::vector<std::size_t> colors;
  for (const TreemapGroup& group : groups) {
    cells += group.cells.size();
    count += group.files;
    colors.push_back(group.color);
    EXPECT_TRUE(std::is_sorted(group.cells.rbegin(), group.cells.rend(),
                               [](const auto& a, const auto& b) { return a.size < b.size; }));
  }
  std::sort(colors.begin(), colors.end());
  EXPECT_EQ(groups.size(), kMaxGroups);
  EXPECT_EQ(std::unique(colors.begin(), colors.end()), colors.end());
  EXPECT_EQ(groups[0].kind, TreemapGroup::Kind::Others);
  EXPECT_EQ(titleOf(groups[0]), "41 other folders");
  EXPECT_LE(cells, kMaxFiles + kMaxGroups);
  EXPECT_EQ(count, 5000u);
  EXPECT_EQ(sizeOf(groups), total);
}

TEST(GroupBySize, GivesEmptyFilesNoCells) {
  TreeOfFiles tree({{"a/b", 0}, {"c", 0}});

  const std::vector<TreemapGroup> groups = groupBySize(tree.files());

  ASSERT_EQ(groups.size(), 2u);
  EXPECT_TRUE(groups[0].cells.empty());
  EXPECT_EQ(groups[0].files, 1u);
}

}  // namespace
