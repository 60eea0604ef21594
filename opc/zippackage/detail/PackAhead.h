// SPDX-License-Identifier: MIT
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "opc/interfaces/Background.h"
#include "opc/interfaces/PackedContents.h"
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
  ~PackAhead();
  PackAhead(const PackAhead&) = delete;
  PackAhead& operator=(const PackAhead&) = delete;

  /// The next item, good until the next call, unpacked if its content was packed before. Nothing
  /// when it is too large to be packed in memory.
  /// Throws what its source throws.
  std::optional<PackedItem> take();

 private:
  /// One item of a batch.
  struct Result {
    PackedItem item;  // without data
    std::size_t at = 0;
    std::size_t packedSize = 0;
    bool isWhole = false;
    std::exception_ptr failure = nullptr;
  };
  /// Neighbouring jobs that one thread does in one go, so that threads seldom meet.
  struct Batch {
    std::size_t begin = 0;
    std::size_t end = 0;
    std::uint64_t size = 0;  // expected, unpacked
    bool isDone = false;
    std::vector<Result> results;
    std::vector<unsigned char> data;
  };

  std::optional<PackedItem> packOne(std::size_t number, ItemPacker& packer) const;
  std::optional<PackedItem> takeFromBatch();
  Batch* begin(bool isWanted);
  void pack(Batch& batch, ItemPacker& packer) const;
  void finish(Batch& batch);
  void help() noexcept;

  std::vector<PackJob> jobs_;
  KnownContents& known_;
  const interfaces::PackedContents::Test& test_;
  ItemPacker packer_;
  std::size_t taken_ = 0;

  // All from here on only where there is a helper: what works alone locks nothing.
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Batch> batches_;  // begun and not yet taken, in order
  std::size_t begun_ = 0;      // jobs
  std::uint64_t ahead_ = 0;    // bytes in batches
  bool isStopped_ = false;
  std::unique_ptr<interfaces::BackgroundTask> helper_;  // last made, first gone
};

}  // namespace opc::zippackage::detail
