// SPDX-License-Identifier: MIT
#include "opc/interfaces/WorkAhead.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <new>
#include <numeric>
#include <thread>
#include <vector>

#include "tests/opc/interfaces/WorkAheadFixture.h"
#include "tests/support/Threads.h"

namespace opc::interfaces {
namespace {

using Ahead = WorkAhead<Numbers>;

constexpr BatchLimits kFew{.jobs = 7, .effort = 50, .batches = 3, .ahead = 500};
constexpr BatchLimits kSingles{.jobs = 1, .effort = 1, .batches = 4, .ahead = 1000};

std::uint64_t effortOf(std::size_t job) {
  return job * 7919 % 31;
}

/// What take() returns, `count` times.
template <typename Results>
Numbers takeAll(WorkAhead<Results>& ahead, std::size_t count) {
  Numbers taken;
  for (std::size_t i = 0; i < count; ++i) {
    const auto [batch, at] = ahead.take();
    taken.push_back(batch[at]);
  }
  return taken;
}

Numbers from0To(std::size_t count) {
  Numbers numbers(count);
  std::iota(numbers.begin(), numbers.end(), std::size_t{0});
  return numbers;
}

class WorkAheadWays : public testing::TestWithParam<test::Starter> {};

TEST_P(WorkAheadWays, ResultsComeInOrderAndEachJobIsDoneOnce) {
  JobLog log;
  const auto makeWorker = [&] {
    return [&](std::size_t job, Numbers& results) {
      log.add(job);
      results.push_back(job);
    };
  };
  Ahead ahead(1000, kFew, effortOf, makeWorker, GetParam().starter);
  if (ahead.hasHelper()) log.waitFor(1);

  const Numbers taken = takeAll(ahead, 1000);

  EXPECT_EQ(taken, from0To(1000));
  Numbers done = log.jobs();
  std::sort(done.begin(), done.end());
  EXPECT_EQ(done, from0To(1000));
}

TEST_P(WorkAheadWays, AFailureToMakeTheWorkerOfTheCallerIsThrownAndLosesNothing) {
  const auto caller = std::this_thread::get_id();
  bool isFirst = true;
  const auto makeWorker = [&] {
    if (std::this_thread::get_id() == caller && std::exchange(isFirst, false)) {
      throw std::bad_alloc();
    }
    return [](std::size_t job, Numbers& results) { results.push_back(job); };
  };
  Ahead ahead(100, kFew, effortOf, makeWorker, GetParam().starter);

  EXPECT_THROW(ahead.take(), std::bad_alloc);
  const Numbers taken = takeAll(ahead, 100);

  EXPECT_EQ(taken, from0To(100));
}

TEST_P(WorkAheadWays, WithoutJobsNobodyWaits) {
  JobLog log;
  const auto makeWorker = [&] {
    return [&](std::size_t job, Numbers& /*results*/) { log.add(job); };
  };

  { const Ahead ahead(0, kFew, effortOf, makeWorker, GetParam().starter); }

  EXPECT_EQ(log.jobs(), Numbers());
}

INSTANTIATE_TEST_SUITE_P(, WorkAheadWays, testing::ValuesIn(test::starters()),
                         [](const auto& test) { return test.param.name; });

TEST(WorkAhead, WhatTheHelperDidIsNotDoneAgain) {
  std::size_t done = 0;
  const auto makeWorker = [&] {
    return [&](std::size_t job, Numbers& results) {
      ++done;
      results.push_back(job);
    };
  };
  // The helper does everything before the caller begins.
  const auto doAtOnce = [](const std::function<void()>& work) {
    startThread(work).reset();
    return startThread([] {});
  };
  constexpr BatchLimits kAll{.jobs = 7, .effort = 50, .batches = 1000, .ahead = 100000};
  Ahead ahead(1000, kAll, effortOf, makeWorker, doAtOnce);
  const std::size_t doneBefore = done;

  const Numbers taken = takeAll(ahead, 1000);

  EXPECT_EQ(doneBefore, 1000u);
  EXPECT_EQ(done, 1000u);
  EXPECT_EQ(taken, from0To(1000));
}

TEST(WorkAhead, EachThreadHasAWorkerOfItsOwn) {
  JobLog log;
  std::atomic<int> strays = 0;
  const auto makeWorker = [&] {
    return [&, owner = std::this_thread::get_id()](std::size_t job, Numbers& results) {
      log.add(job);
      if (job == 0) log.waitFor(2);  // the other is at work, too
      if (std::this_thread::get_id() != owner) ++strays;
      results.push_back(job);
    };
  };
  Ahead ahead(100, kSingles, effortOf, makeWorker, startThread);
  log.waitFor(1);

  takeAll(ahead, 100);

  EXPECT_EQ(strays, 0);
}

TEST(WorkAhead, WhileTheHelperIsAtTheFirstJobTheCallerDoesTheOthers) {
  JobLog log;
  std::vector<std::thread::id> doneBy(4);
  const auto makeWorker = [&] {
    return [&](std::size_t job, Numbers& results) {
      log.add(job);
      doneBy[job] = std::this_thread::get_id();
      if (job == 0) log.waitFor(4);
      results.push_back(job);
    };
  };
  Ahead ahead(4, kSingles, effortOf, makeWorker, startThread);
  log.waitFor(1);

  const Numbers taken = takeAll(ahead, 4);

  EXPECT_EQ(taken, from0To(4));
  EXPECT_NE(doneBy[0], std::this_thread::get_id());
  EXPECT_EQ(std::count(doneBy.begin(), doneBy.end(), std::this_thread::get_id()), 3);
}

TEST(WorkAhead, AHelperThatGetsNoMemoryForItsWorkerLeavesEverythingToTheCaller) {
  const auto caller = std::this_thread::get_id();
  const auto makeWorker = [&] {
    if (std::this_thread::get_id() != caller) throw std::bad_alloc();
    return [](std::size_t job, Numbers& results) { results.push_back(job); };
  };
  Ahead ahead(100, kFew, effortOf, makeWorker, startThread);

  const Numbers taken = takeAll(ahead, 100);

  EXPECT_EQ(taken, from0To(100));
}

/// Results for which there is memory only once outside of the caller's thread.
struct ScarceNumbers : Numbers {
  void reserve(std::size_t count) {
    if (std::this_thread::get_id() != caller && isFull.exchange(true)) throw std::bad_alloc();
    Numbers::reserve(count);
  }

  static inline std::thread::id caller;
  static inline std::atomic<bool> isFull;
};

TEST(WorkAhead, AHelperThatGetsNoMemoryForABatchLeavesItToTheCaller) {
  ScarceNumbers::caller = std::this_thread::get_id();
  ScarceNumbers::isFull = false;
  JobLog log;
  const auto makeWorker = [&] {
    return [&](std::size_t job, ScarceNumbers& results) {
      log.add(job);
      results.push_back(job);
    };
  };
  WorkAhead<ScarceNumbers> ahead(100, kFew, effortOf, makeWorker, startThread);
  log.waitFor(1);  // the first batch is the helper's

  const Numbers taken = takeAll(ahead, 100);

  EXPECT_EQ(taken, from0To(100));
}

}  // namespace
}  // namespace opc::interfaces
