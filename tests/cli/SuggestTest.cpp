// SPDX-License-Identifier: MIT
#include "tool/Suggest.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace {

constexpr std::array<std::string_view, 5> kWords{"create", "extract", "get", "set", "properties"};

TEST(Suggest, CountsLettersChangedAddedRemovedAndSwapped) {
  EXPECT_EQ(tool::editDistance("", "abc"), 3u);
  EXPECT_EQ(tool::editDistance("craete", "create"), 1u);
  EXPECT_EQ(tool::editDistance("kitten", "sitting"), 3u);
  EXPECT_EQ(tool::editDistance("NAME", "name"), 0u);
}

TEST(Suggest, FindsTheNearestWord) {
  EXPECT_EQ(tool::nearest("craete", kWords), "create");
  EXPECT_EQ(tool::nearest("extrakt", kWords), "extract");
  EXPECT_EQ(tool::nearest("prop", kWords), "properties");
}

TEST(Suggest, FindsNothingForAWordThatIsFarFromAll) {
  EXPECT_EQ(tool::nearest("verify", kWords), "");
  EXPECT_EQ(tool::nearest("", kWords), "");
  EXPECT_EQ(tool::nearest(std::string(1000000, 'x'), kWords), "");
}

TEST(Suggest, SaysSomethingElseWhenNothingIsNear) {
  EXPECT_EQ(tool::suggestion("gt", kWords, "none"), "did you mean 'get'?");
  EXPECT_EQ(tool::suggestion("qqqqqq", kWords, "none"), "none");
}

}  // namespace
