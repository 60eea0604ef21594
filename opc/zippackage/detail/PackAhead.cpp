// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/PackAhead.h"

#include <algorithm>
#include <utility>

namespace opc::zippackage::detail {
namespace {

constexpr std::size_t kBatchItems = 64;
constexpr std::uint64_t kBatchSize = std::uint64_t{512} << 10;
// What may wait for being written.
constexpr std::uint64_t kMostAhead = std::uint64_t{24} << 20;
constexpr std::size_t kMostBatches = 16;

}  // namespace

PackAhead::PackAhead(std::vector<PackJob> jobs, KnownContents& known,
                     const interfaces::PackedContents::Test& test,
                     const interfaces::BackgroundStarter& starter)
    : jobs_(std::move(jobs)), known_(known), test_(test) {
  if (starter && jobs_.size() > 1) helper_ = starter([this] { help(); });
}

PackAhead::~PackAhead() {
  if (!helper_) return;
  {
    const std::lock_guard lock(mutex_);
    isStopped_ = true;
  }
  changed_.notify_all();
}

std::optional<PackedItem> PackAhead::take() {
  return helper_ ? takeFromBatch() : packOne(taken_++, packer_);
}

std::optional<PackedItem> PackAhead::packOne(std::size_t number, ItemPacker& packer) const {
  const PackJob& job = jobs_[number];
  if (job.source->size() > kWholeLimit) return std::nullopt;
  if (!packer.read(*job.source->getInputStream(), *job.source)) return std::nullopt;
  std::optional<KnownContents::Match> content;
  if (known_.sizeOf(number) != KnownContents::Size::Alone) {
    const Bytes data = packer.begun();
    content = known_.match(number, job.level, data.size(), contentHash(data));
  }
  PackedItem item;
  if (!content || content->isFirst) {
    item = packer.pack(job.level, *job.source);
    if (test_) item.hasPassed = test_(packer.begun());
  }
  item.content = content;
  return item;
}

std::optional<PackedItem> PackAhead::takeFromBatch() {
  std::unique_lock lock(mutex_);
  if (!batches_.empty() && batches_.front().end == taken_) {
    ahead_ -= batches_.front().size;
    batches_.pop_front();
    changed_.notify_all();
  }
  // While the helper is at the item that is wanted, there are others to be packed.
  while (batches_.empty() || !batches_.front().isDone) {
    if (Batch* batch = begin(batches_.empty())) {
      lock.unlock();
      pack(*batch, packer_);
      lock.lock();
      finish(*batch);
    } else {
      changed_.wait(lock);
    }
  }
  const Batch& batch = batches_.front();
  const Result& result = batch.results[taken_ - batch.begin];
  ++taken_;
  if (result.failure) std::rethrow_exception(result.failure);
  if (!result.isWhole) return std::nullopt;
  PackedItem item = result.item;
  item.data = Bytes(batch.data).subspan(result.at, result.packedSize);
  return item;
}

// The next batch, when there is one and room for it; always when it is wanted at once.
PackAhead::Batch* PackAhead::begin(bool isWanted) {
  if (begun_ == jobs_.size()) return nullptr;
  const bool isFull = ahead_ >= kMostAhead || batches_.size() >= kMostBatches;
  if (isFull && !isWanted) return nullptr;
  Batch batch;
  batch.begin = batch.end = begun_;
  do {
    const std::uint64_t size = jobs_[batch.end].source->size();
    batch.size += size <= kWholeLimit ? size : 0;
    ++batch.end;
  } while (batch.end < jobs_.size() && batch.end - begun_ < kBatchItems && batch.size < kBatchSize);
  batch.results.reserve(batch.end - begun_);
  batches_.push_back(std::move(batch));
  begun_ = batches_.back().end;
  ahead_ += batches_.back().size;
  return &batches_.back();
}

// A failure is a result too: the caller that wants the item gets it.
void PackAhead::pack(Batch& batch, ItemPacker& packer) const {
  for (std::size_t job = batch.begin; job < batch.end; ++job) {
    Result& result = batch.results.emplace_back();
    try {
      const auto item = packOne(job, packer);
      if (!item) continue;
      result.item = *item;
      result.at = batch.data.size();
      result.packedSize = item->data.size();
      batch.data.insert(batch.data.end(), item->data.begin(), item->data.end());
      result.isWhole = true;
    } catch (...) {
      result.failure = std::current_exception();
    }
  }
}

void PackAhead::finish(Batch& batch) {
  batch.isDone = true;
  changed_.notify_all();
}

void PackAhead::help() noexcept {
  ItemPacker packer;
  std::unique_lock lock(mutex_);
  try {
    while (!isStopped_ && begun_ < jobs_.size()) {
      if (Batch* batch = begin(false)) {
        lock.unlock();
        pack(*batch, packer);
        lock.lock();
        finish(*batch);
      } else {
        changed_.wait(lock);
      }
    }
  } catch (...) {
    // Short of memory before a batch was begun: it is left to the other thread.
  }
}

}  // namespace opc::zippackage::detail
