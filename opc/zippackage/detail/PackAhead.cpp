// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/PackAhead.h"

#include <memory>
#include <utility>

namespace opc::zippackage::detail {
namespace {

// What may wait for being written is in `ahead`.
constexpr interfaces::BatchLimits kBatches{.jobs = 64,
                                           .effort = std::uint64_t{512} << 10,
                                           .batches = 16,
                                           .ahead = std::uint64_t{24} << 20};

}  // namespace

PackAhead::PackAhead(std::vector<PackJob> jobs, KnownContents& known,
                     const interfaces::PackedContents::Test& test,
                     const interfaces::BackgroundStarter& starter)
    : jobs_(std::move(jobs)),
      known_(known),
      test_(test),
      work_(
          jobs_.size(), kBatches, [this](std::size_t number) { return effortOf(number); },
          [this] { return makeWorker(); }, starter) {}

std::uint64_t PackAhead::effortOf(std::size_t number) const {
  const std::uint64_t size = jobs_[number].source->size();
  return size <= kWholeLimit ? size : 0;
}

std::optional<PackedItem> PackAhead::take() {
  if (!work_.hasHelper()) return packOne(taken_++, packer_);
  const auto [results, at] = work_.take();
  const Result& result = results.items[at];
  if (result.failure) std::rethrow_exception(result.failure);
  if (!result.isWhole) return std::nullopt;
  PackedItem item = result.item;
  item.data = Bytes(results.data).subspan(result.at, result.packedSize);
  return item;
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

// A failure is a result too: the caller that wants the item gets it.
PackAhead::Work::Worker PackAhead::makeWorker() const {
  auto packer = std::make_shared<ItemPacker>();
  return [this, packer](std::size_t number, Results& results) {
    Result& result = results.items.emplace_back();
    try {
      results.add(packOne(number, *packer), result);
    } catch (...) {
      result.failure = std::current_exception();
    }
  };
}

void PackAhead::Results::add(const std::optional<PackedItem>& item, Result& result) {
  if (!item) return;
  result.item = *item;
  result.at = data.size();
  result.packedSize = item->data.size();
  data.insert(data.end(), item->data.begin(), item->data.end());
  result.isWhole = true;
}

}  // namespace opc::zippackage::detail
