// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <vector>

#include "opc/ContentHash.h"
#include "opc/HashIndex.h"
#include "opc/interfaces/IContentSource.h"

namespace opc::zippackage::detail {

/// An item to be packed. The source must outlive everything that it is given to.
struct PackJob {
  interfaces::IContentSource* source;
  int level;
};

/// Finds jobs whose content an earlier job has, so that it is packed once. It remembers the
/// first million contents whose sizes repeat, in at most 100 bytes each.
class KnownContents {
 public:
  static constexpr std::size_t kMaxContents = std::size_t{1} << 20;

  /// The number of a content, and whether it got that number from this job.
  struct Match {
    std::uint32_t number = 0;
    bool isFirst = false;
  };
  /// Whether jobs of the same level expect the same size.
  enum class Size : unsigned char { Alone, First, Repeated };

  /// Several threads may use it if `isShared`; it takes no lock if not.
  KnownContents(const std::vector<PackJob>& jobs, bool isShared);

  /// Of Size::Alone there is nothing to be found.
  Size sizeOf(std::size_t job) const { return sizes_[job]; }

  /// Finds what `job` holds, or remembers it. Nothing if only a later job has it, or if it
  /// already remembers as many as it can.
  std::optional<Match> match(std::size_t job, int level, std::uint64_t size,
                             const ContentHash::Value& hash);

 private:
  struct Known {
    ContentHash::Value hash;
    std::uint64_t size;
    std::uint32_t job;
    int level;
  };

  std::vector<Size> sizes_;  // by job
  const bool isShared_;
  std::mutex mutex_;
  std::vector<Known> known_;  // by number
  HashIndex<std::uint32_t> index_;
};

}  // namespace opc::zippackage::detail
