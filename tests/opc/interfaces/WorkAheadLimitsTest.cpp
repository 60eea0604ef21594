// SPDX-License-Identifier: MIT
// How far WorkAhead goes: the sizes of batches, how many wait, and when it ends.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "opc/interfaces/WorkAhead.h"
#include "tests/opc/interfaces/WorkAheadFixture.h"
#include "tests/support/Threads.h"

namespace opc::interfaces {
namespace {

using Ahead = WorkAhead<Numbers>;

constexpr std::uint64_t kNoLimit = std::uint64_t{1} << 62;

std::uint64_t ten(std::size_t /*job*/) {
  return 10;
}

Ahead::Worker addNumber() {
  return [](std::size_t job, Numbers& results) { results.push_back(job); };
}

/// The sizes of the batches that `count` jobs come in.
Numbers batchSizes(std::size_t count, const BatchLimits& limits) {
  Ahead ahead(count, limits, ten, addNumber, startThread);
  Numbers sizes;
  for (std::size_t i = 0; i < count; ++i) {
    const auto [batch, at] = ahead.take();
    if (at == 0) sizes.push_back(batch.size());
  }
  return sizes;
}

TEST(WorkAhead, ABatchHasAtMostSoManyJobs) {
  EXPECT_EQ(batchSizes(10, {.jobs = 4, .effort = kNoLimit, .batches = 2, .ahead = kNoLimit}),
            (Numbers{4, 4, 2}));
}

TEST(WorkAhead, ABatchEndsWithTheJobThatFillsIt) {
  EXPECT_EQ(batchSizes(10, {.jobs = 100, .effort = 30, .batches = 2, .ahead = kNoLimit}),
            (Numbers{3, 3, 3, 1}));
  EXPECT_EQ(batchSizes(10, {.jobs = 100, .effort = 31, .batches = 2, .ahead = kNoLimit}),
            (Numbers{4, 4, 2}));
}

/// Whether a helper is started for so many jobs with an effort of ten each.
bool isHelped(std::size_t jobs, std::uint64_t leastWork) {
  bool isStarted = false;
  const auto start = [&](std::function<void()> work) {
    isStarted = true;
    return startThread(std::move(work));
  };
  const BatchLimits limits{
      .jobs = 1, .effort = 1, .batches = 2, .ahead = kNoLimit, .leastWork = leastWork};
  const Ahead ahead(jobs, limits, ten, addNumber, start);
  EXPECT_EQ(ahead.hasHelper(), isStarted);
  return isStarted;
}

TEST(WorkAhead, ForLessThanTheLeastWorkStartsNoThread) {
  EXPECT_FALSE(isHelped(10, 101));
  EXPECT_TRUE(isHelped(10, 100));
}

TEST(WorkAhead, ForASingleJobStartsNoThread) {
  EXPECT_FALSE(isHelped(1, 0));
  EXPECT_TRUE(isHelped(2, 0));
}

/// Limits of which one allows three jobs, with an effort of ten each, that are not yet taken.
struct ThreeAhead {
  std::string name;
  BatchLimits limits;
};

class WorkAheadByThree : public testing::TestWithParam<ThreeAhead> {};

TEST_P(WorkAheadByThree, GoesSoFarAndNoFurther) {
  constexpr std::size_t kJobs = 500;
  constexpr std::size_t kAhead = 3;
  JobLog log;
  std::atomic<std::size_t> taken = 0;  // and done with
  std::atomic<std::size_t> farthest = 0;
  const auto makeWorker = [&] {
    return [&](std::size_t job, Numbers& results) {
      farthest = std::max<std::size_t>(farthest, job - std::min(job, taken.load()));
      log.add(job);
      results.push_back(job);
    };
  };
  Ahead ahead(kJobs, GetParam().limits, ten, makeWorker, startThread);

  for (std::size_t i = 0; i < kJobs; ++i) {
    // Without the caller, which has i - 1 results and holds one.
    const std::size_t reach = std::max<std::size_t>(i, 1) - 1 + kAhead;
    log.waitFor(std::min(reach, kJobs));
    taken = i;
    ahead.take();
  }

  EXPECT_EQ(farthest, kAhead - 1);
}

INSTANTIATE_TEST_SUITE_P(
    , WorkAheadByThree,
    testing::Values(
        ThreeAhead{"Batches", {.jobs = 1, .effort = 1, .batches = 3, .ahead = kNoLimit}},
        ThreeAhead{"Effort", {.jobs = 1, .effort = 1, .batches = 1000, .ahead = 21}},
        ThreeAhead{"EffortToTheByte", {.jobs = 1, .effort = 1, .batches = 1000, .ahead = 30}}),
    [](const auto& test) { return test.param.name; });

TEST(WorkAhead, TheCallerKeepsTheLimitsWhileItWaits) {
  constexpr BatchLimits kThree{.jobs = 1, .effort = 1, .batches = 3, .ahead = kNoLimit};
  JobLog log;
  const auto makeWorker = [&] {
    return [&](std::size_t job, Numbers& results) {
      log.add(job);
      if (job == 0) log.waitFor(3);
      results.push_back(job);
    };
  };
  Ahead ahead(1000, kThree, ten, makeWorker, startThread);
  log.waitFor(1);

  ahead.take();

  EXPECT_EQ(log.jobs(), (Numbers{0, 1, 2}));
}

// A job with more effort than may wait is done all the same.
TEST(WorkAhead, WhatIsWantedAtOnceIsBegunWhateverTheLimits) {
  const BatchLimits none{.jobs = 1, .effort = 1, .batches = 0, .ahead = 0};
  Ahead ahead(100, none, ten, addNumber, startThread);

  for (std::size_t i = 0; i < 100; ++i) EXPECT_EQ(ahead.take().results.at(0), i);
}

TEST(WorkAhead, EndsWhileTheHelperWaitsForRoom) {
  constexpr BatchLimits kTwo{.jobs = 1, .effort = 1, .batches = 2, .ahead = kNoLimit};
  JobLog log;
  const auto makeWorker = [&] {
    return [&](std::size_t job, Numbers& /*results*/) { log.add(job); };
  };

  // Often enough that it does wait at the end of some.
  for (std::size_t i = 1; i <= 200; ++i) {
    const Ahead ahead(1000, kTwo, ten, makeWorker, startThread);
    log.waitFor(2 * i);
  }

  EXPECT_EQ(log.jobs().size(), 400u);
}

/// A thread that goes on, or begins, only when its end is awaited: `atEnd` is called then.
class HeldTask final : public BackgroundTask {
 public:
  HeldTask(std::function<void()> work, std::function<void()> atEnd)
      : thread_(std::make_unique<test::ThreadTask>(std::move(work))), atEnd_(std::move(atEnd)) {}
  ~HeldTask() override { atEnd_(); }
  HeldTask(const HeldTask&) = delete;
  HeldTask& operator=(const HeldTask&) = delete;

 private:
  std::unique_ptr<test::ThreadTask> thread_;
  std::function<void()> atEnd_;
};

TEST(WorkAhead, EndsAfterTheBatchThatTheHelperIsAt) {
  constexpr BatchLimits kPairs{.jobs = 2, .effort = kNoLimit, .batches = 9, .ahead = kNoLimit};
  JobLog log;
  JobLog ends;
  const auto makeWorker = [&] {
    return [&](std::size_t job, Numbers& /*results*/) {
      log.add(job);
      ends.waitFor(1);
    };
  };
  const auto start = [&](std::function<void()> work) {
    return std::make_unique<HeldTask>(std::move(work), [&] { ends.add(0); });
  };

  {
    const Ahead ahead(1000, kPairs, ten, makeWorker, start);
    log.waitFor(1);
  }

  EXPECT_EQ(log.jobs(), (Numbers{0, 1}));
}

TEST(WorkAhead, AHelperThatComesTooLateDoesNothing) {
  constexpr BatchLimits kOne{.jobs = 1, .effort = 1, .batches = 9, .ahead = kNoLimit};
  JobLog log;
  JobLog ends;
  const auto makeWorker = [&] {
    return [&](std::size_t job, Numbers& /*results*/) { log.add(job); };
  };
  const auto start = [&](const std::function<void()>& work) {
    const auto late = [&ends, work] {
      ends.waitFor(1);
      work();
    };
    return std::make_unique<HeldTask>(late, [&] { ends.add(0); });
  };

  { const Ahead ahead(1000, kOne, ten, makeWorker, start); }

  EXPECT_EQ(log.jobs(), Numbers());
}

}  // namespace
}  // namespace opc::interfaces
