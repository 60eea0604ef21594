// SPDX-License-Identifier: MIT
#include "text/ShortestEdit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <random>
#include <string_view>

namespace {

using text::Edit;
using text::findShortestEdit;
using Elements = std::vector<std::uint32_t>;

constexpr std::uint64_t kPlenty = 100'000'000;

Elements elements(std::string_view text) {
  return {text.begin(), text.end()};
}

Elements randomElements(std::mt19937& random, std::size_t count, std::uint32_t kinds) {
  Elements result(count);
  for (auto& element : result) element = static_cast<std::uint32_t>(random() % kinds);
  return result;
}

Elements left(const Elements& all, const std::vector<bool>& isGone) {
  Elements kept;
  for (std::size_t i = 0; i < all.size(); ++i) {
    if (!isGone[i]) kept.push_back(all[i]);
  }
  return kept;
}

std::size_t changes(const Edit& edit) {
  return static_cast<std::size_t>(std::count(edit.isRemoved.begin(), edit.isRemoved.end(), true) +
                                  std::count(edit.isAdded.begin(), edit.isAdded.end(), true));
}

/// By the table of longest common subsequences.
std::size_t fewestChanges(const Elements& a, const Elements& b) {
  std::vector<std::size_t> row(b.size() + 1);
  for (const std::uint32_t element : a) {
    std::size_t diagonal = 0;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t above = row[j + 1];
      row[j + 1] = element == b[j] ? diagonal + 1 : std::max(above, row[j]);
      diagonal = above;
    }
  }
  return a.size() + b.size() - 2 * row.back();
}

struct Case {
  const char* a;
  const char* b;
  std::size_t changes;
};

class ShortestEditCases : public testing::TestWithParam<Case> {};

TEST_P(ShortestEditCases, TakeTheFewestChanges) {
  const Elements a = elements(GetParam().a);
  const Elements b = elements(GetParam().b);

  const Edit edit = findShortestEdit(a, b, kPlenty);

  EXPECT_EQ(changes(edit), GetParam().changes);
  EXPECT_EQ(left(a, edit.isRemoved), left(b, edit.isAdded));
}

INSTANTIATE_TEST_SUITE_P(All, ShortestEditCases,
                         testing::Values(Case{"", "", 0}, Case{"a", "", 1}, Case{"", "ab", 2},
                                         Case{"a", "a", 0}, Case{"a", "b", 2}, Case{"ab", "ba", 2},
                                         Case{"abcabba", "cbabac", 5}, Case{"abc", "axc", 2},
                                         Case{"aaaa", "aa", 2}, Case{"abab", "baba", 2},
                                         Case{"xaxbxcx", "abc", 4}, Case{"abcdef", "fedcba", 10}));

TEST(ShortestEdit, NoSequencesTakeMoreChangesThanNeeded) {
  std::mt19937 random(7);
  for (int round = 0; round < 3000; ++round) {
    const auto kinds = static_cast<std::uint32_t>(1 + random() % 5);
    const Elements a = randomElements(random, random() % 24, kinds);
    const Elements b = randomElements(random, random() % 24, kinds);

    const Edit edit = findShortestEdit(a, b, kPlenty);

    ASSERT_EQ(left(a, edit.isRemoved), left(b, edit.isAdded)) << "round " << round;
    ASSERT_EQ(changes(edit), fewestChanges(a, b)) << "round " << round;
  }
}

TEST(ShortestEdit, LongSequencesTakeNoMoreChangesThanNeeded) {
  std::mt19937 random(8);
  const Elements a = randomElements(random, 2000, 4);
  const Elements b = randomElements(random, 1500, 4);

  const Edit edit = findShortestEdit(a, b, kPlenty);

  EXPECT_EQ(left(a, edit.isRemoved), left(b, edit.isAdded));
  EXPECT_EQ(changes(edit), fewestChanges(a, b));
}

TEST(ShortestEdit, WhateverTheStepsTheRestIsTheSame) {
  std::mt19937 random(9);
  const Elements a = randomElements(random, 300, 3);
  const Elements b = randomElements(random, 300, 3);
  for (std::uint64_t steps = 0; steps < 40'000; steps = steps * 2 + 1) {
    const Edit edit = findShortestEdit(a, b, steps);

    ASSERT_EQ(left(a, edit.isRemoved), left(b, edit.isAdded)) << steps << " steps";
  }
}

TEST(ShortestEdit, WithoutStepsAllBetweenTheSameEndsIsReplaced) {
  const Edit edit = findShortestEdit(elements("abcde"), elements("axcye"), 0);

  EXPECT_EQ(edit.isRemoved, (std::vector<bool>{false, true, true, true, false}));
  EXPECT_EQ(edit.isAdded, (std::vector<bool>{false, true, true, true, false}));
}

TEST(ShortestEdit, SequencesMadeToTakeLongEndWithinTheSteps) {
  std::mt19937 random(10);
  const Elements a = randomElements(random, 1'000'000, 2);
  const Elements b = randomElements(random, 1'000'000, 2);

  const Edit edit = findShortestEdit(a, b, 10'000'000);

  EXPECT_EQ(left(a, edit.isRemoved), left(b, edit.isAdded));
}

}  // namespace
