// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "opc/FileDescriptor.h"
#include "opc/Streams.h"
#include "opc/interfaces/IContentSource.h"
#include "opc/zippackage/LittleEndian.h"

namespace opc::zippackage::detail {

class PendingContent;

/// Where the contents of new items wait for the commit: in memory as long as they are small, alone
/// and together, else in one temporary file without a name, which only grows.
class PendingStore {
 public:
  static constexpr std::size_t kMemoryLimit = std::size_t{64} << 20;

  /// Only tests set another limit.
  explicit PendingStore(std::string folder, std::size_t memoryLimit = kMemoryLimit)
      : folder_(std::move(folder)), memoryLimit_(memoryLimit) {}

  /// Puts `data` at the end of the file. Returns where. Throws SystemError.
  std::uint64_t spill(Bytes data);
  void readSpilled(std::uint64_t offset, unsigned char* into, std::size_t size) const;

  /// To be called with the content that is about to grow. If memory is short, moves the content
  /// that grew before to the file: only one content at a time collects small pieces in memory.
  /// Throws SystemError.
  void turnTo(PendingContent& content);
  void forget(const PendingContent& content);

  void countInMemory(std::size_t added, std::size_t removed) { inMemory_ += added - removed; }
  std::size_t inMemory() const { return inMemory_; }
  bool isMemoryShort() const { return inMemory_ > memoryLimit_; }

 private:
  std::string folder_;
  std::size_t memoryLimit_;
  FileDescriptor file_;
  std::uint64_t fileSize_ = 0;
  std::size_t inMemory_ = 0;
  PendingContent* growing_ = nullptr;
};

/// What has been written to one new item so far. The store must outlive this object, which must
/// outlive its streams.
class PendingContent final : public interfaces::IContentSource {
 public:
  PendingContent(PendingStore& store, std::string name) : store_(store), name_(std::move(name)) {}
  ~PendingContent() override;
  PendingContent(const PendingContent&) = delete;
  PendingContent& operator=(const PendingContent&) = delete;

  void clear();
  void append(Bytes data);
  /// Moves what is in memory into the store's file.
  void spillMemory();
  /// Reads all `size` bytes at `offset`, which must be there.
  void read(std::uint64_t offset, unsigned char* into, std::size_t size) const;

  std::unique_ptr<InputStream> getInputStream() override;
  std::uint64_t size() const override { return spilled_ + memory_.size(); }
  std::string description() const override { return name_; }

 private:
  /// A stretch of the content that lies in one piece in the store's file.
  struct Extent {
    std::uint64_t start = 0;  ///< in the content
    std::uint64_t place = 0;  ///< in the file
    std::uint64_t size = 0;
  };

  bool hasRoomFor(std::size_t size) const;
  void keep(Bytes data);
  void freeMemory();
  void spill(Bytes data);
  void readExtents(std::uint64_t offset, unsigned char* into, std::size_t size) const;

  PendingStore& store_;
  std::string name_;
  std::vector<Extent> extents_;
  std::uint64_t spilled_ = 0;          ///< bytes in extents
  std::vector<unsigned char> memory_;  ///< what follows them
};

}  // namespace opc::zippackage::detail
