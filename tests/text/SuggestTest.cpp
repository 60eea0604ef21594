// SPDX-License-Identifier: MIT
#include "text/Suggest.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace {

constexpr std::array<std::string_view, 5> kWords{"create", "extract", "get", "set", "properties"};

TEST(Suggest, CountsLettersChangedAddedRemovedAndSwapped) {
  EXPECT_EQ(text::editDistance("", "abc"), 3u);
  EXPECT_EQ(text::editDistance("craete", "create"), 1u);
  EXPECT_EQ(text::editDistance("kitten", "sitting"), 3u);
  EXPECT_EQ(text::editDistance("NAME", "name"), 0u);
}

TEST(Suggest, FindsTheNearestWord) {
  EXPECT_EQ(text::nearest("craete", kWords), "create");
  EXPECT_EQ(text::nearest("extrakt", kWords), "extract");
  EXPECT_EQ(text::nearest("prop", kWords), "properties");
}

TEST(Suggest, FindsNothingForAWordThatIsFarFromAll) {
  EXPECT_EQ(text::nearest("verify", kWords), "");
  EXPECT_EQ(text::nearest("", kWords), "");
  EXPECT_EQ(text::nearest(std::string(1000000, 'x'), kWords), "");
}

TEST(Suggest, FindsTheNearestPathByNameAndLetters) {
  const std::vector<std::string_view> paths{"src/Übersicht.md", "src/deep/a.m", "README.md"};

  EXPECT_EQ(text::nearestPath("SRC/", paths), "src");
  EXPECT_EQ(text::nearestPath("./README.md", paths), "README.md");
  EXPECT_EQ(text::nearestPath("src\\deep", paths), "src/deep");
  EXPECT_EQ(text::nearestPath("A.m", paths), "src/deep/a.m");
  EXPECT_EQ(text::nearestPath("raedme", paths), "");
  EXPECT_EQ(text::nearestPath("readme", paths), "README.md");
  EXPECT_EQ(text::nearestPath("elsewhere", paths), "");
  EXPECT_EQ(text::nearestPath("", paths), "");
  EXPECT_EQ(text::nearestPath("a", {}), "");
}

TEST(Suggest, SaysSomethingElseWhenNothingIsNear) {
  EXPECT_EQ(text::suggestion("gt", kWords, "none"), "did you mean 'get'?");
  EXPECT_EQ(text::suggestion("qqqqqq", kWords, "none"), "none");
}

}  // namespace
