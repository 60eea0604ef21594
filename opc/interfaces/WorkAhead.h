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

/// Neighbouring jobs are done in one go, so that threads seldom meet. Efforts are in bytes.
struct BatchLimits {
  std::size_t jobs;             ///< in a batch, at most
  std::uint64_t effort;         ///< a batch ends when it has so much
  std::size_t batches;          ///< begun and not yet taken, at most
  std::uint64_t ahead;          ///< no batch begins while those not yet taken have so much
  std::uint64_t leastWork = 0;  ///< for less in all, no second thread is used
};

/// For reading items. Little enough in a batch that both threads end at the same time.
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
  /// Does one job and adds what comes of it to the results of its batch. A failure is a result
  /// too: it must not throw. Each thread has its own.
  using Worker = std::function<void(std::size_t job, Results& results)>;
  /// Called by the thread that the worker is for. It may throw std::bad_alloc.
  using WorkerMaker = std::function<Worker()>;
  using Effort = std::function<std::uint64_t(std::size_t job)>;
  /// The results of the batch that holds a job, and the place of the job in that batch.
  struct Taken {
    Results& results;
    std::size_t at;
  };

  /// `starter` may be empty. `Results` has a function reserve(), after which a worker can add so
  /// many results without memory of the batch.
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
    // While the helper is at the job that is wanted, there are others to be done.
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

  // The next batch, when there is one and room for it; always when it is wanted at once.
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
      // Before a batch was begun: it is left to the other thread.
    }
  }

  std::size_t jobs_;
  BatchLimits limits_;
  Effort effort_;
  WorkerMaker makeWorker_;
  Worker worker_;
  Results alone_;
  std::size_t taken_ = 0;

  // All from here on only where there is a helper: what works alone locks nothing.
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Batch> batches_;  // begun and not yet taken, in order
  std::size_t begun_ = 0;      // jobs
  std::uint64_t ahead_ = 0;    // effort in batches
  bool isStopped_ = false;
  std::unique_ptr<BackgroundTask> helper_;  // declared last, so that it is destroyed first
};

}  // namespace opc::interfaces
