// SPDX-License-Identifier: MIT
#include "text/LineDifference.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace {

using text::ChangedBlock;
using text::compareLines;
using text::Lines;
using text::splitLines;
using Blocks = std::vector<ChangedBlock>;

Blocks compare(std::string_view a, std::string_view b) {
  return compareLines(splitLines(a), splitLines(b));
}

TEST(LineDifference, ALineKeepsItsEnd) {
  EXPECT_EQ(splitLines("a\n\nb"), (Lines{"a\n", "\n", "b"}));
  EXPECT_EQ(splitLines("a\r\nb\n"), (Lines{"a\r\n", "b\n"}));
  EXPECT_TRUE(splitLines("").empty());
}

TEST(LineDifference, SameTextsHaveNoBlocks) {
  EXPECT_EQ(compare("", ""), Blocks());
  EXPECT_EQ(compare("a\nb\n", "a\nb\n"), Blocks());
}

TEST(LineDifference, AMissingLineEndIsADifference) {
  EXPECT_EQ(compare("a\nb\n", "a\nb"), (Blocks{{1, 2, 1, 2}}));
}

TEST(LineDifference, WhatIsPutInIsABlockWithoutOldLines) {
  EXPECT_EQ(compare("a\nb\n", "a\nx\nb\n"), (Blocks{{1, 1, 1, 2}}));
  EXPECT_EQ(compare("a\n", "x\na\n"), (Blocks{{0, 0, 0, 1}}));
  EXPECT_EQ(compare("", "x\n"), (Blocks{{0, 0, 0, 1}}));
}

TEST(LineDifference, WhatIsTakenOutIsABlockWithoutNewLines) {
  EXPECT_EQ(compare("a\nx\nb\n", "a\nb\n"), (Blocks{{1, 2, 1, 1}}));
  EXPECT_EQ(compare("x\ny\n", ""), (Blocks{{0, 2, 0, 0}}));
}

TEST(LineDifference, BlocksHaveSameLinesBetweenThem) {
  EXPECT_EQ(compare("a\nb\nc\nd\n", "a\nB\nc\nD\n"), (Blocks{{1, 2, 1, 2}, {3, 4, 3, 4}}));
}

TEST(LineDifference, ALineThatMovedIsTakenOutAndPutIn) {
  EXPECT_EQ(compare("a\nb\nc\nd\n", "b\nc\nd\na\n"), (Blocks{{0, 1, 0, 0}, {4, 4, 3, 4}}));
}

/// The second text, put together from the first one and the blocks.
std::string apply(const Lines& a, const Lines& b, const Blocks& blocks) {
  std::string text;
  std::size_t next = 0;
  for (const ChangedBlock& block : blocks) {
    for (; next < block.aBegin; ++next) text += a[next];
    for (std::size_t i = block.bBegin; i < block.bEnd; ++i) text += b[i];
    next = block.aEnd;
  }
  for (; next < a.size(); ++next) text += a[next];
  return text;
}

TEST(LineDifference, TheBlocksMakeTheSecondTextOfTheFirst) {
  std::mt19937 random(3);
  const auto text = [&](std::size_t lines, unsigned kinds) {
    std::string result;
    for (std::size_t i = 0; i < lines; ++i) result += std::to_string(random() % kinds) + "\n";
    return result;
  };
  for (int round = 0; round < 1000; ++round) {
    const std::string a = text(random() % 30, 12);
    const std::string b = text(random() % 30, 12);

    const Blocks blocks = compare(a, b);

    ASSERT_EQ(apply(splitLines(a), splitLines(b), blocks), b) << "round " << round;
  }
}

TEST(LineDifference, ManySmallChangesInALongTextAreFoundOneByOne) {
  std::string a;
  std::string b;
  for (int i = 0; i < 200'000; ++i) {
    a += "line " + std::to_string(i) + "\n";
    b += (i % 20 == 10 ? "other " : "line ") + std::to_string(i) + "\n";
  }

  EXPECT_EQ(compare(a, b).size(), 10'000U);
}

TEST(LineDifference, TextsMadeToTakeLongAreComparedToTheEnd) {
  std::mt19937 random(5);
  std::string a;
  std::string b;
  for (int i = 0; i < 500'000; ++i) {
    a += random() % 2 == 0 ? "a\n" : "b\n";
    b += random() % 2 == 0 ? "a\n" : "b\n";
  }

  const Blocks blocks = compare(a, b);

  EXPECT_EQ(apply(splitLines(a), splitLines(b), blocks), b);
}

}  // namespace
