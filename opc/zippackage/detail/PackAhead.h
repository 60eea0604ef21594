// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <optional>
#include <vector>

#include "opc/interfaces/Background.h"
#include "opc/interfaces/PackedContents.h"
#include "opc/interfaces/WorkAhead.h"
#include "opc/zippackage/detail/ItemPacker.h"
#include "opc/zippackage/detail/KnownContents.h"

namespace opc::zippackage::detail {

/// Packs items in order, with the help of a second thread if one is available. The results are
/// the same with and without it, byte for byte and error for error.
class PackAhead {
 public:
  /// `known` is made of the same jobs; it and `test` must outlive this. `test` and `starter` may be
  /// empty.
  PackAhead(std::vector<PackJob> jobs, KnownContents& known,
            const interfaces::PackedContents::Test& test,
            const interfaces::BackgroundStarter& starter);

  /// The next item, valid until the next call, unpacked if its content was packed before. Nothing
  /// when it is too large to be packed in memory.
  /// Throws what its source throws.
  std::optional<PackedItem> take();

 private:
  struct Result {
    PackedItem item;  // without data
    std::size_t at = 0;
    std::size_t packedSize = 0;
    bool isWhole = false;
    std::exception_ptr failure = nullptr;
  };
  /// The items of a batch, and their data.
  struct Results {
    void reserve(std::size_t count) { items.reserve(count); }
    void add(const std::optional<PackedItem>& item, Result& result);

    std::vector<Result> items;
    std::vector<unsigned char> data;
  };
  using Work = interfaces::WorkAhead<Results>;

  std::uint64_t effortOf(std::size_t number) const;
  std::optional<PackedItem> packOne(std::size_t number, ItemPacker& packer) const;
  Work::Worker makeWorker() const;

  std::vector<PackJob> jobs_;
  KnownContents& known_;
  const interfaces::PackedContents::Test& test_;
  ItemPacker packer_;  // of a thread that works alone
  std::size_t taken_ = 0;
  Work work_;  // declared last, so that it is destroyed first
};

}  // namespace opc::zippackage::detail
