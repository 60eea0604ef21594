// SPDX-License-Identifier: MIT
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <new>
#include <utility>

#include "opc/interfaces/Background.h"

namespace opc::interfaces {

/// Jobs are run in batches of neighbours, so that threads seldom have to synchronise. Efforts are
/// in bytes.
struct BatchLimits {
  std::size_t jobs;             ///< maximum number in a batch
  std::uint64_t effort;         ///< a batch ends when it reaches this
  std::size_t batches;          ///< maximum number begun and not yet taken
  std::uint64_t ahead;          ///< none begins while those not yet taken reach this effort
  std::uint64_t leastWork = 0;  ///< no second thread is used if all jobs together have less
};

/// Limits for reading items. Batches are so small that both threads end at about the same time.
inline constexpr BatchLimits kReadBatches{.jobs = 256,
                                          .effort = std::uint64_t{1} << 20,
                                          .batches = 16,
                                          .ahead = std::uint64_t{1} << 62,
                                          .leastWork = std::uint64_t{1} << 20};

/// Does numbered jobs in order, with the help of a second thread if one is available. The results
/// are the same with and without it.
template <typename Results>
class WorkAhead {
 public:
  /// Runs one job and adds its result to the results of the batch. Must not throw: a failure is a
  /// result too. Each thread has a worker of its own.
  using Worker = std::function<void(std::size_t job, Results& results)>;
  /// Creates a worker on the thread that will use it. May throw std::bad_alloc.
  using WorkerMaker = std::function<Worker()>;
  using Effort = std::function<std::uint64_t(std::size_t job)>;
  /// The results of the batch that holds a job, and the place of the job in that batch.
  struct Taken {
    Results& results;
    std::size_t at;
  };

  /// `starter` may be empty. `Results` must have a function reserve(count), which is called for
  /// each batch with its number of jobs.
  WorkAhead(std::size_t jobs, const BatchLimits& limits, Effort effort, WorkerMaker makeWorker,
            const BackgroundStarter& starter)
      : jobs_(jobs),
        limits_(limits),
        effort_(std::move(effort)),
        makeWorker_(std::move(makeWorker)) {
    if (starter && isMuch()) helper_ = starter([this] { help(); });
  }

  ~WorkAhead() {
    if (!helper_) return;
    {
      const std::lock_guard lock(mutex_);
      isStopped_ = true;
    }
    changed_.notify_all();
  }
  WorkAhead(const WorkAhead&) = delete;
  WorkAhead& operator=(const WorkAhead&) = delete;

  bool hasHelper() const { return helper_ != nullptr; }

  /// The result of the next job, valid until the next call. There must be one.
  Taken take() {
    if (!worker_) worker_ = makeWorker_();
    if (helper_) return takeFromBatch();
    alone_ = Results();
    worker_(taken_++, alone_);
    return {alone_, 0};
  }

 private:
  struct Batch {
    std::size_t begin = 0;
    std::size_t end = 0;
    std::uint64_t effort = 0;
    bool isDone = false;
    Results results;
  };

  bool isMuch() const {
    std::uint64_t effort = 0;
    for (std::size_t job = 0; job < jobs_ && effort < limits_.leastWork; ++job) {
      effort += effort_(job);
    }
    return effort >= limits_.leastWork && jobs_ > 1;
  }

  Taken takeFromBatch() {
    std::unique_lock lock(mutex_);
    if (!batches_.empty() && batches_.front().end == taken_) {
      ahead_ -= batches_.front().effort;
      batches_.pop_front();
      changed_.notify_all();
    }
    // While the helper works on the batch that is wanted, this thread does other batches.
    while (batches_.empty() || !batches_.front().isDone) {
      if (Batch* batch = begin(batches_.empty())) {
        work(*batch, worker_, lock);
      } else {
        changed_.wait(lock);
      }
    }
    Batch& batch = batches_.front();
    return {batch.results, taken_++ - batch.begin};
  }

  // Begins the next batch. Returns null if there are no more jobs, or if the limits are reached and
  // the batch is not wanted at once.
  Batch* begin(bool isWanted) {
    if (begun_ == jobs_) return nullptr;
    const bool isFull = ahead_ >= limits_.ahead || batches_.size() >= limits_.batches;
    if (isFull && !isWanted) return nullptr;
    Batch batch;
    batch.begin = batch.end = begun_;
    do {
      batch.effort += effort_(batch.end++);
    } while (batch.end < jobs_ && batch.end - begun_ < limits_.jobs &&
             batch.effort < limits_.effort);
    batch.results.reserve(batch.end - batch.begin);
    batches_.push_back(std::move(batch));
    begun_ = batches_.back().end;
    ahead_ += batches_.back().effort;
    return &batches_.back();
  }

  void work(Batch& batch, Worker& worker, std::unique_lock<std::mutex>& lock) {
    lock.unlock();
    for (std::size_t job = batch.begin; job < batch.end; ++job) worker(job, batch.results);
    lock.lock();
    batch.isDone = true;
    changed_.notify_all();
  }

  void help() noexcept {
    try {
      Worker worker = makeWorker_();
      std::unique_lock lock(mutex_);
      while (!isStopped_ && begun_ < jobs_) {
        if (Batch* batch = begin(false)) {
          work(*batch, worker, lock);
        } else {
          changed_.wait(lock);
        }
      }
    } catch (const std::bad_alloc&) {
      // Thrown before a batch was begun: the other thread does what is left.
    }
  }

  std::size_t jobs_;
  BatchLimits limits_;
  Effort effort_;
  WorkerMaker makeWorker_;
  Worker worker_;
  Results alone_;
  std::size_t taken_ = 0;

  // The members below are used only with a helper; without one, nothing is locked.
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Batch> batches_;  // begun and not yet taken, in order
  std::size_t begun_ = 0;      // jobs
  std::uint64_t ahead_ = 0;    // effort in batches
  bool isStopped_ = false;
  std::unique_ptr<BackgroundTask> helper_;  // declared last, so that it is destroyed first
};

}  // namespace opc::interfaces
