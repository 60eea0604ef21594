// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "opc/LargeBlocks.h"
#include "opc/zippackage/ZipFault.h"

namespace opc::zippackage::detail {

/// Finds equal names among the entries of a directory: one block of memory for all, and a hash that
/// nobody can prepare names against.
class DuplicateNames {
 public:
  DuplicateNames();

  std::uint64_t hashOf(std::string_view name) const;

  /// Before anything is added: how many names there are going to be.
  void makeRoomFor(std::size_t count);

  /// Has the memory brought near that adding a name of that hash is going to look at: in a large
  /// directory the way there is what takes time. (GCC leaves out calls that do nothing else.)
  [[gnu::always_inline]] void prefetch(std::uint64_t hash) const {
    __builtin_prefetch(&slots_[static_cast<std::size_t>(hash) & mask_]);
  }

  /// Adds an entry whose name has that hash. Returns the earlier one of the same name, or kNoEntry.
  /// `nameOf` gives the name of an entry.
  template <typename NameOf>
  std::uint32_t add(std::uint32_t entry, std::uint64_t hash, const NameOf& nameOf) {
    const auto tag = static_cast<std::uint32_t>(hash >> 32);
    std::size_t at = static_cast<std::size_t>(hash) & mask_;
    for (; slots_[at].entryPlusOne != 0; at = (at + 1) & mask_) {
      const std::uint32_t other = slots_[at].entryPlusOne - 1;
      if (slots_[at].tag == tag && nameOf(other) == nameOf(entry)) return other;
    }
    slots_[at] = {tag, entry + 1};
    return kNoEntry;
  }

 private:
  struct Slot {
    std::uint32_t tag = 0;
    std::uint32_t entryPlusOne = 0;  ///< 0: free
  };

  std::uint64_t seeds_[2];
  std::size_t mask_ = 0;
  std::vector<Slot, LargeBlockAllocator<Slot>> slots_;
};

}  // namespace opc::zippackage::detail
