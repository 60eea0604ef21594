// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "hostarray/kxarray.h"
#include "hostarray/standin/CallScope.h"
#include "hostarray/standin/testing.h"
#include "tests/hostarray/HostErrors.h"

using hostarray::standin::CallScope;
using hostarray::standin::liveArrays;
using test::hostErrorOf;

namespace {

TEST(CallScope, FreesWhatNobodyOwnsWhenItEnds) {
  {
    const CallScope call;
    const std::size_t two = 2;
    kxArray* cell = kxCreateCellArray(1, &two);
    kxSetCell(cell, 0, kxCreateDoubleScalar(1));
    kxCreateString_UTF16(u"left behind");
    ASSERT_EQ(liveArrays(), 3u);
    EXPECT_EQ(call.unowned(), 2u);
  }

  EXPECT_EQ(liveArrays(), 0u);
}

TEST(CallScope, LeavesArraysFromBeforeItAlone) {
  kxArray* before = kxCreateDoubleScalar(1);
  { const CallScope call; }

  EXPECT_EQ(liveArrays(), 1u);
  kxDestroyArray(before);
}

TEST(CallScope, AKeptArrayOutlivesIt) {
  kxArray* kept = nullptr;
  {
    CallScope call;
    kept = call.keep(kxCreateDoubleScalar(5));
    EXPECT_EQ(call.unowned(), 0u);
  }

  EXPECT_EQ(*kxGetDoubles(kept), 5.0);
  kxDestroyArray(kept);
  EXPECT_EQ(liveArrays(), 0u);
}

TEST(CallScope, KeepingNullIsNull) {
  CallScope call;

  EXPECT_EQ(call.keep(nullptr), nullptr);
}

TEST(CallScope, AStoredArrayCannotBeKept) {
  CallScope call;
  const std::size_t one = 1;
  kxArray* cell = kxCreateCellArray(1, &one);
  kxArray* value = kxCreateDoubleScalar(5);
  kxSetCell(cell, 0, value);

  EXPECT_EQ(hostErrorOf([&] { call.keep(value); }), "Korvan:badArgument");
}

TEST(CallScope, ATemporaryThatWasKeptAndReturnedCountsNoMore) {
  CallScope call;
  kxArray* k = kxCreateDoubleScalar(1);
  kxArray* temporary = kxSubscriptedReference(k, 1, &k);

  call.keep(temporary);

  EXPECT_EQ(call.unowned(), 1u);
  kxDestroyArray(temporary);
}

TEST(CallScope, AnInnerOneFreesOnlyItsOwn) {
  const CallScope outer;
  kxCreateDoubleScalar(1);
  {
    const CallScope inner;
    kxCreateDoubleScalar(2);
    EXPECT_EQ(inner.unowned(), 1u);
  }

  EXPECT_EQ(liveArrays(), 1u);
  kxCreateDoubleScalar(3);
  EXPECT_EQ(outer.unowned(), 2u);
}

TEST(CallScope, EndingOutOfOrderLeavesTheOtherInPlace) {
  auto outer = std::make_unique<CallScope>();
  auto inner = std::make_unique<CallScope>();

  outer.reset();
  kxCreateDoubleScalar(1);

  EXPECT_EQ(inner->unowned(), 1u);
  inner.reset();
  EXPECT_EQ(liveArrays(), 0u);
  kxArray* after = kxCreateDoubleScalar(2);
  kxDestroyArray(after);
}

TEST(CallScope, ArraysDestroyedInAnyOrderLeaveTheRest) {
  const CallScope call;
  std::vector<kxArray*> arrays;
  for (int i = 0; i < 5; ++i) arrays.push_back(kxCreateDoubleScalar(i));

  for (const std::size_t i : {2u, 4u, 0u}) kxDestroyArray(arrays[i]);

  EXPECT_EQ(call.unowned(), 2u);
  EXPECT_EQ(liveArrays(), 2u);
}

}  // namespace
