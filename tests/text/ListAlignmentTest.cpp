// SPDX-License-Identifier: MIT
#include "text/ListAlignment.h"

#include <gtest/gtest.h>

namespace {

using text::alignRecords;
using text::RecordKeys;
using text::RecordPair;
using Pairs = std::vector<RecordPair>;
using Records = std::vector<RecordKeys>;

RecordKeys text(std::string whole) {
  return {std::move(whole), {}};
}

TEST(ListAlignment, EqualRecordsPairAroundOneThatIsPutIn) {
  EXPECT_EQ(alignRecords({text("a"), text("b")}, {text("x"), text("a"), text("b")}),
            (Pairs{{0, 1}, {1, 2}}));
}

TEST(ListAlignment, EmptyListsHaveNoPairs) {
  EXPECT_EQ(alignRecords({}, {}), Pairs());
  EXPECT_EQ(alignRecords({text("a")}, {}), Pairs());
}

TEST(ListAlignment, AKeyPairsRecordsThatSayDifferentThings) {
  const Records a{{"one, old", {"1"}}, {"two", {"2"}}};
  const Records b{{"zero", {"0"}}, {"one, new", {"1"}}, {"two", {"2"}}};

  EXPECT_EQ(alignRecords(a, b), (Pairs{{0, 1}, {1, 2}}));
}

TEST(ListAlignment, ALaterKeyCountsWhereTheFirstFindsNobody) {
  const Records a{{"x", {"guid 1", "viewer"}}, {"y", {"guid 2", "editor"}}};
  const Records b{{"p", {"guid 9", "new"}}, {"q", {"guid 3", "viewer"}}, {"r", {"guid 2", "edit"}}};

  EXPECT_EQ(alignRecords(a, b), (Pairs{{0, 1}, {1, 2}}));
}

TEST(ListAlignment, AnEmptyKeyIsIgnored) {
  const Records a{{"x", {""}}};
  const Records b{{"p", {"1"}}, {"q", {""}}};

  EXPECT_EQ(alignRecords(a, b), (Pairs{{0, 0}}));
}

TEST(ListAlignment, WhatIsLeftOverPairsAtTheSamePlace) {
  EXPECT_EQ(alignRecords({text("a"), text("b"), text("c")}, {text("a"), text("x"), text("c")}),
            (Pairs{{0, 0}, {1, 1}, {2, 2}}));
}

TEST(ListAlignment, ARecordThatMovedHasNoPartner) {
  EXPECT_EQ(alignRecords({text("a"), text("b"), text("c")}, {text("b"), text("c"), text("a")}),
            (Pairs{{1, 0}, {2, 1}}));
}

TEST(ListAlignment, RecordsOfOneKeyPairInOrder) {
  const Records a{{"1", {"k"}}, {"2", {"k"}}};
  const Records b{{"3", {"k"}}, {"4", {"k"}}};

  EXPECT_EQ(alignRecords(a, b), (Pairs{{0, 0}, {1, 1}}));
}

TEST(ListAlignment, LongListsWithNothingInCommonAreAligned) {
  Records a;
  Records b;
  for (int i = 0; i < 100'000; ++i) a.push_back({std::to_string(i), {"same"}});
  for (int i = 100'000; i > 0; --i) b.push_back({std::to_string(-i), {"same"}});

  EXPECT_EQ(alignRecords(a, b).size(), 100'000U);
}

}  // namespace
