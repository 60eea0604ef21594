// SPDX-License-Identifier: MIT
#include "text/Lines.h"

#include <gtest/gtest.h>

namespace {

using text::linesOf;
using text::trimmed;
using Texts = std::vector<std::string_view>;

TEST(Lines, AreTrimmedOfAllBlanksAtBothEnds) {
  EXPECT_EQ(trimmed(" \t a b\r\n\f\v"), "a b");
  EXPECT_EQ(trimmed("\xC2\xA0"), "\xC2\xA0");
  EXPECT_EQ(trimmed(" \n "), "");
  EXPECT_EQ(trimmed(""), "");
}

TEST(Lines, EndInAnyOfTheUsualWays) {
  EXPECT_EQ(linesOf("one\ntwo\r\nthree\rfour\ffive"),
            (Texts{"one", "two", "three", "four", "five"}));
  EXPECT_EQ(linesOf("one\n\r\n\n"), (Texts{"one", "", ""}));
  EXPECT_EQ(linesOf(""), Texts{});
}

TEST(Lines, BeginAfterAByteOrderMark) {
  EXPECT_EQ(linesOf("\xEF\xBB\xBFone\n\xEF\xBB\xBFtwo"), (Texts{"one", "\xEF\xBB\xBFtwo"}));
}

}  // namespace
