// SPDX-License-Identifier: MIT
#include "opc/Suggest.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace {

constexpr std::array<std::string_view, 5> kWords{"create", "extract", "get", "set", "properties"};

TEST(Suggest, CountsLettersChangedAddedRemovedAndSwapped) {
  EXPECT_EQ(opc::editDistance("", "abc"), 3u);
  EXPECT_EQ(opc::editDistance("craete", "create"), 1u);
  EXPECT_EQ(opc::editDistance("kitten", "sitting"), 3u);
  EXPECT_EQ(opc::editDistance("NAME", "name"), 0u);
}

TEST(Suggest, FindsTheNearestWord) {
  EXPECT_EQ(opc::nearest("craete", kWords), "create");
  EXPECT_EQ(opc::nearest("extrakt", kWords), "extract");
  EXPECT_EQ(opc::nearest("prop", kWords), "properties");
}

TEST(Suggest, FindsNothingForAWordThatIsFarFromAll) {
  EXPECT_EQ(opc::nearest("verify", kWords), "");
  EXPECT_EQ(opc::nearest("", kWords), "");
  EXPECT_EQ(opc::nearest(std::string(1000000, 'x'), kWords), "");
}

TEST(Suggest, SaysSomethingElseWhenNothingIsNear) {
  EXPECT_EQ(opc::suggestion("gt", kWords, "none"), "did you mean 'get'?");
  EXPECT_EQ(opc::suggestion("qqqqqq", kWords, "none"), "none");
}

}  // namespace
