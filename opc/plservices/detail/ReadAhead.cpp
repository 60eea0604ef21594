// SPDX-License-Identifier: MIT
#include "opc/plservices/detail/ReadAhead.h"

#include <utility>

namespace opc::plservices::detail {
namespace {

constexpr std::size_t kBatchBlocks = 64;
constexpr std::size_t kBatchSize = std::size_t{512} << 10;
// What may wait for being written.
constexpr std::size_t kMaxAhead = std::size_t{8} << 20;

}  // namespace

ReadAhead::ReadAhead(PartReader reader, const interfaces::BackgroundStarter& starter)
    : reader_(std::move(reader)) {
  if (starter && !reader_.isEnd()) helper_ = starter([this] { help(); });
}

ReadAhead::~ReadAhead() {
  if (!helper_) return;
  {
    const std::lock_guard lock(mutex_);
    isStopped_ = true;
  }
  changed_.notify_all();
}

PartBlock ReadAhead::read() {
  if (!helper_) return reader_.read();
  if (next_ == current_.entries.size()) waitForBatch();
  const Entry& entry = current_.entries[next_];
  ++next_;
  if (entry.failure) std::rethrow_exception(entry.failure);
  PartBlock block = entry.block;
  block.data = std::span<const unsigned char>(current_.data).subspan(entry.at, entry.size);
  return block;
}

void ReadAhead::waitForBatch() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return !batches_.empty() || failure_; });
  if (batches_.empty()) std::rethrow_exception(failure_);
  std::swap(current_, batches_.front());
  used_ = std::move(batches_.front());
  batches_.pop_front();
  ahead_ -= current_.data.size();
  next_ = 0;
  changed_.notify_all();
}

void ReadAhead::help() noexcept {
  try {
    while (!reader_.isEnd()) {
      Batch batch = emptyBatch();
      while (add(batch)) continue;
      const bool hasFailed = batch.entries.back().failure != nullptr;
      if (!hand(std::move(batch)) || hasFailed) return;
    }
  } catch (...) {
    // Short of memory for the batches themselves.
    const std::lock_guard lock(mutex_);
    failure_ = std::current_exception();
    changed_.notify_all();
  }
}

// With the memory of one that has been used, when there is one.
ReadAhead::Batch ReadAhead::emptyBatch() {
  Batch batch;
  {
    const std::lock_guard lock(mutex_);
    std::swap(batch, used_);
  }
  batch.entries.clear();
  batch.entries.reserve(kBatchBlocks);
  batch.data.clear();
  return batch;
}

// Whether there is, and may be, one more.
bool ReadAhead::add(Batch& batch) {
  Entry entry;
  try {
    entry.block = reader_.read();
    entry.at = batch.data.size();
    entry.size = entry.block.data.size();
    batch.data.insert(batch.data.end(), entry.block.data.begin(), entry.block.data.end());
  } catch (...) {
    entry.failure = std::current_exception();
  }
  const bool hasFailed = entry.failure != nullptr;
  batch.entries.push_back(std::move(entry));
  return !hasFailed && !reader_.isEnd() && batch.entries.size() < kBatchBlocks &&
         batch.data.size() < kBatchSize;
}

// Whether more is wanted.
bool ReadAhead::hand(Batch batch) {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return ahead_ < kMaxAhead || isStopped_; });
  ahead_ += batch.data.size();
  batches_.push_back(std::move(batch));
  changed_.notify_all();
  return !isStopped_;
}

}  // namespace opc::plservices::detail
