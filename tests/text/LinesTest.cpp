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

TEST(Lines, AreCountedByTheirLineFeedsWhereverTheyStand) {
  std::string text;
  std::size_t count = 0;
  for (int c = 0; c < 256; ++c) {
    for (int width = 0; width < 11; ++width) text += static_cast<char>(c);
    text += '\n';
    ++count;
  }
  count += 11;  // of U+000A itself

  for (std::size_t from = 0; from < 8; ++from) {
    EXPECT_EQ(text::countLineFeeds(std::string_view(text).substr(from)), count) << from;
  }
  EXPECT_EQ(text::countLineFeeds(""), 0u);
  EXPECT_EQ(text::countLineFeeds("a\nb\n"), 2u);
}

}  // namespace
