// SPDX-License-Identifier: MIT
#include "text/UnifiedHunks.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <string>

#include "tests/support/TemporaryFolder.h"

namespace {

using text::HunkLine;
using text::Lines;
using text::patchName;
using text::splitLines;

std::string hunks(std::string_view a, std::string_view b) {
  const Lines aLines = splitLines(a);
  const Lines bLines = splitLines(b);
  std::string text;
  text::visitHunks(aLines, bLines, text::compareLines(aLines, bLines),
                   [&](HunkLine kind, std::string_view line) {
                     if (kind == HunkLine::Same) text += ' ';
                     if (kind == HunkLine::Removed) text += '-';
                     if (kind == HunkLine::Added) text += '+';
                     text.append(line) += '\n';
                   });
  return text;
}

TEST(UnifiedHunks, AChangeHasThreeLinesRoundIt) {
  EXPECT_EQ(hunks("1\n2\n3\n4\n5\n6\n7\n8\n9\n", "1\n2\n3\n4\nfive\n6\n7\n8\n9\n"),
            "@@ -2,7 +2,7 @@\n 2\n 3\n 4\n-5\n+five\n 6\n 7\n 8\n");
}

TEST(UnifiedHunks, NearChangesShareAHunkAndFarOnesDoNot) {
  EXPECT_EQ(hunks("a\n1\n2\n3\n4\n5\n6\nb\n", "A\n1\n2\n3\n4\n5\n6\nB\n"),
            "@@ -1,8 +1,8 @@\n-a\n+A\n 1\n 2\n 3\n 4\n 5\n 6\n-b\n+B\n");
  EXPECT_EQ(hunks("a\n1\n2\n3\n4\n5\n6\n7\nb\n", "A\n1\n2\n3\n4\n5\n6\n7\nB\n"),
            "@@ -1,4 +1,4 @@\n-a\n+A\n 1\n 2\n 3\n"
            "@@ -6,4 +6,4 @@\n 5\n 6\n 7\n-b\n+B\n");
}

TEST(UnifiedHunks, AnEmptySideBeginsAtLineZero) {
  EXPECT_EQ(hunks("", "x\ny\n"), "@@ -0,0 +1,2 @@\n+x\n+y\n");
  EXPECT_EQ(hunks("x\n", ""), "@@ -1 +0,0 @@\n-x\n");
}

TEST(UnifiedHunks, AMissingLineEndIsMarked) {
  EXPECT_EQ(hunks("x", "x\n"), "@@ -1 +1 @@\n-x\n\\ No newline at end of file\n+x\n");
}

TEST(UnifiedHunks, SameTextsHaveNone) {
  EXPECT_EQ(hunks("a\nb", "a\nb"), "");
}

TEST(UnifiedHunks, ANameIsQuotedWhenItMustBe) {
  EXPECT_EQ(patchName("lib/é.m"), "lib/é.m");
  EXPECT_EQ(patchName("a b.m"), "a b.m\t");
  EXPECT_EQ(patchName("a b.m "), "\"a b.m \"");
  EXPECT_EQ(patchName("a\"b\\c\n.m"), "\"a\\\"b\\\\c\\012.m\"");
}

TEST(UnifiedHunks, PatchMakesTheSecondTextOfTheFirst) {
  const test::TemporaryFolder folder;
  std::mt19937 random(11);
  const auto text = [&] {
    std::string result;
    const std::size_t lines = random() % 60;
    for (std::size_t i = 0; i < lines; ++i) result += std::to_string(random() % 40) + "\n";
    if (random() % 3 == 0 && !result.empty()) result.pop_back();
    return result;
  };
  const std::string command =
      "patch -s '" + (folder / "a").string() + "' < '" + (folder / "diff").string() + "'";
  for (int round = 0; round < 60; ++round) {
    const std::string a = text();
    const std::string b = text();
    if (a == b || b.empty()) continue;
    test::writeFile(folder / "a", a);
    test::writeFile(folder / "diff", "--- a\n+++ b\n" + hunks(a, b));

    ASSERT_EQ(std::system(command.c_str()), 0) << "round " << round;

    ASSERT_EQ(test::readFile(folder / "a"), b) << "round " << round;
  }
}

TEST(UnifiedHunks, TextsOfFewChangesComeOutAsDiffPrintsThem) {
  const test::TemporaryFolder folder;
  std::mt19937 random(12);
  for (int round = 0; round < 60; ++round) {
    std::string a;
    std::string b;
    for (int i = 0; i < 80; ++i) {
      const std::string line = "line " + std::to_string(i) + "\n";
      const auto fate = random() % 12;
      if (fate != 0) a += line;
      if (fate != 1) b += fate == 2 ? "changed " + line : line;
    }
    test::writeFile(folder / "a", a);
    test::writeFile(folder / "b", b);

    const std::string command =
        "cd '" + folder.path().string() + "' && diff -u a b | tail -n +3 > expected";
    ASSERT_EQ(std::system(command.c_str()), 0);

    ASSERT_EQ(hunks(a, b), test::readFile(folder / "expected")) << "round " << round;
  }
}

}  // namespace
