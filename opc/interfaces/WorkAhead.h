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
#include <vector>

#include "opc/interfaces/Background.h"

namespace opc::interfaces {

/// Does numbered jobs in order, with the help of a second thread if one is available. The results
/// are the same with and without it.
template <typename Result>
class WorkAhead {
 public:
  /// Does one job. What fails belongs into the result: it must not throw. Each thread has its own.
  using Worker = std::function<Result(std::size_t job)>;
  /// Called by the thread that the worker is for. It may throw std::bad_alloc.
  using WorkerMaker = std::function<Worker()>;
  /// How much work a job is, in bytes.
  using Effort = std::function<std::uint64_t(std::size_t job)>;

  /// `starter` may be empty. It is not called for little work.
  WorkAhead(std::size_t jobs, Effort effort, WorkerMaker makeWorker,
            const BackgroundStarter& starter)
      : jobs_(jobs),
        effort_(std::move(effort)),
        makeWorker_(std::move(makeWorker)),
        worker_(makeWorker_()) {
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

  /// The result of the next job. There must be one.
  Result take() { return helper_ ? takeFromBatch() : worker_(taken_++); }

 private:
  // Enough that threads seldom meet, and little enough that both end at the same time.
  static constexpr std::size_t kBatchJobs = 256;
  static constexpr std::uint64_t kBatchEffort = std::uint64_t{1} << 20;
  static constexpr std::size_t kMostBatches = 16;  // that are done or being done

  struct Batch {
    std::size_t begin = 0;
    std::size_t end = 0;
    bool isDone = false;
    std::vector<Result> results;
  };

  bool isMuch() const {
    std::uint64_t effort = 0;
    for (std::size_t job = 0; job < jobs_ && effort < kBatchEffort; ++job) effort += effort_(job);
    return effort >= kBatchEffort && jobs_ > 1;
  }

  Result takeFromBatch() {
    std::unique_lock lock(mutex_);
    if (!batches_.empty() && batches_.front().end == taken_) {
      batches_.pop_front();
      changed_.notify_all();
    }
    // While the helper is at the job that is wanted, there are others to be done.
    while (batches_.empty() || !batches_.front().isDone) {
      if (Batch* batch = begin(batches_.empty())) {
        lock.unlock();
        work(*batch, worker_);
        lock.lock();
        finish(*batch);
      } else {
        changed_.wait(lock);
      }
    }
    Batch& batch = batches_.front();
    return std::move(batch.results[taken_++ - batch.begin]);
  }

  // The next batch, when there is one and room for it; always when it is wanted at once.
  Batch* begin(bool isWanted) {
    if (begun_ == jobs_ || (batches_.size() >= kMostBatches && !isWanted)) return nullptr;
    Batch batch;
    batch.begin = batch.end = begun_;
    std::uint64_t effort = 0;
    do {
      effort += effort_(batch.end++);
    } while (batch.end < jobs_ && batch.end - begun_ < kBatchJobs && effort < kBatchEffort);
    batch.results.reserve(batch.end - batch.begin);
    batches_.push_back(std::move(batch));
    begun_ = batches_.back().end;
    return &batches_.back();
  }

  void work(Batch& batch, Worker& worker) const {
    for (std::size_t job = batch.begin; job < batch.end; ++job) {
      batch.results.push_back(worker(job));
    }
  }

  void finish(Batch& batch) {
    batch.isDone = true;
    changed_.notify_all();
  }

  void help() noexcept {
    try {
      Worker worker = makeWorker_();
      std::unique_lock lock(mutex_);
      while (!isStopped_ && begun_ < jobs_) {
        if (Batch* batch = begin(false)) {
          lock.unlock();
          work(*batch, worker);
          lock.lock();
          finish(*batch);
        } else {
          changed_.wait(lock);
        }
      }
    } catch (const std::bad_alloc&) {
      // Before a batch was begun: it is left to the other thread.
    }
  }

  std::size_t jobs_;
  Effort effort_;
  WorkerMaker makeWorker_;
  Worker worker_;
  std::size_t taken_ = 0;

  // All from here on only where there is a helper: what works alone locks nothing.
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Batch> batches_;  // begun and not yet taken, in order
  std::size_t begun_ = 0;      // jobs
  bool isStopped_ = false;
  std::unique_ptr<BackgroundTask> helper_;  // last made, first gone
};

}  // namespace opc::interfaces
