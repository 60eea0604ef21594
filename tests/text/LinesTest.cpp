// SPDX-License-Identifier: MIT
#include "text/Lines.h"

#include <gtest/gtest.h>

namespace {

using text::fenceOf;
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

TEST(Fence, IsThreeMarksOrMore) {
  EXPECT_EQ(fenceOf("```"), "```");
  EXPECT_EQ(fenceOf("~~~"), "~~~");
  EXPECT_EQ(fenceOf("  `````\r"), "`````");
  EXPECT_EQ(fenceOf("```text"), "```");
  EXPECT_EQ(fenceOf("``` {.text #id}"), "```");
  EXPECT_EQ(fenceOf("~~~ `a`"), "~~~");
}

TEST(Fence, IsNoLineThatOnlyHoldsSuchMarks) {
  for (const char* line : {"", "``", "~~", "a ```", "~~`", "```a```", "``` a `b` c", "`"}) {
    EXPECT_EQ(fenceOf(line), "") << line;
  }
}

}  // namespace
