// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "addon/comparison/Contents.h"
#include "opc/ByteBuffer.h"
#include "opc/interfaces/WorkAhead.h"

namespace addon::comparison::detail {

/// Little enough in a batch that both threads end at the same time.
inline constexpr opc::interfaces::BatchLimits kSideBatches{.jobs = 256,
                                                           .effort = std::uint64_t{1} << 20,
                                                           .batches = 16,
                                                           .ahead = std::uint64_t{1} << 62,
                                                           .leastWork = std::uint64_t{1} << 20};

/// A file or part as a SideReader reads it. Made by the thread that uses the package.
class SideItem {
 public:
  SideItem(addon::packaging::AddonPackage& package, const Item& item);

  /// In bytes; 0 for what is left.
  std::uint64_t effort() const { return item_ ? size_ : 0; }

 private:
  friend class SideReader;

  std::optional<opc::interfaces::ItemIndex> item_;  // none if it is left
  std::uint64_t size_;
};

/// Reads items beside the thread that uses the package. What is large, in pieces, damaged or of a
/// package that is open for changes is left to openItem(), which also reports the errors.
class SideReader {
 public:
  /// The package must stay open.
  explicit SideReader(addon::packaging::AddonPackage& package)
      : reader_(package.physicalPackage().makeReader()) {}

  /// All of an item, valid until the next call; nothing if it is left.
  std::optional<std::span<const unsigned char>> read(const SideItem& item);

 private:
  std::unique_ptr<opc::interfaces::IItemReader> reader_;
  opc::ByteBuffer buffer_;
};

}  // namespace addon::comparison::detail
