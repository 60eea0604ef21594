// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/KnownContents.h"

#include <algorithm>
#include <tuple>

namespace opc::zippackage::detail {
namespace {

// What is stored anyway is not worth a hash, and a source that asks for a packed size of its own
// may be packed in another way than one with the same bytes.
bool mayRepeat(const PackJob& job) {
  return job.level > 0 && job.source->size() > 0 && job.source->leastPackedSize() == 0;
}

}  // namespace

KnownContents::KnownContents(const std::vector<PackJob>& jobs, bool isShared)
    : sizes_(jobs.size(), Size::Alone), isShared_(isShared) {
  struct Expected {
    std::uint64_t size;
    int level;
    std::uint32_t job;
    bool isLike(const Expected& other) const { return size == other.size && level == other.level; }
  };
  std::vector<Expected> expected;
  expected.reserve(jobs.size());
  for (std::size_t job = 0; job < jobs.size(); ++job) {
    if (!mayRepeat(jobs[job])) continue;
    expected.push_back(
        {jobs[job].source->size(), jobs[job].level, static_cast<std::uint32_t>(job)});
  }
  std::sort(expected.begin(), expected.end(), [](const Expected& a, const Expected& b) {
    return std::tie(a.size, a.level, a.job) < std::tie(b.size, b.level, b.job);
  });
  for (std::size_t i = 1; i < expected.size(); ++i) {
    if (!expected[i].isLike(expected[i - 1])) continue;
    Size& before = sizes_[expected[i - 1].job];
    if (before == Size::Alone) before = Size::First;
    sizes_[expected[i].job] = Size::Repeated;
  }
}

std::optional<KnownContents::Match> KnownContents::match(std::size_t job, int level,
                                                         std::uint64_t size,
                                                         const ContentHash::Value& hash) {
  const auto isSame = [&](std::uint32_t number) {
    const Known& known = known_[number];
    return known.hash == hash && known.size == size && known.level == level;
  };
  std::unique_lock lock(mutex_, std::defer_lock);
  if (isShared_) lock.lock();
  if (const std::uint32_t* number = index_.find(hash[0], isSame)) {
    const std::uint32_t first = known_[*number].job;
    if (first > job) return std::nullopt;
    return Match{*number, first == job};
  }
  if (known_.size() == kMaxContents) return std::nullopt;
  const auto number = static_cast<std::uint32_t>(known_.size());
  known_.push_back({hash, size, static_cast<std::uint32_t>(job), level});
  index_.insert(hash[0], number);
  return Match{number, true};
}

}  // namespace opc::zippackage::detail
