// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "opc/interfaces/IPhysicalPackage.h"

namespace test {

/// An item as it is stored on a disk in memory.
struct MemoryItem {
  std::string name;
  std::string bytes;
  opc::interfaces::ItemKind kind = opc::interfaces::ItemKind::File;
  bool executable = false;
  std::int64_t modified = 0;
};

/// What remains after a package is closed. Without items there is no file.
struct MemoryDisk {
  std::optional<std::vector<MemoryItem>> items;
  unsigned commits = 0;

  MemoryDisk& add(std::string name, std::string bytes);
  std::vector<std::string> names() const;
  bool has(std::string_view name) const;
  /// The bytes of the item with exactly that name. Throws std::out_of_range if there is none.
  const std::string& bytes(std::string_view name) const;
};

/// A physical package in memory that records what is read from it and fails on demand.
class MemoryPhysicalPackage final : public opc::interfaces::IPhysicalPackage {
 public:
  /// `disk` must outlive the package.
  explicit MemoryPhysicalPackage(MemoryDisk& disk) : disk_(disk) {}

  /// The names of the items whose bytes were read, in order, since the package was made.
  const std::vector<std::string>& itemsRead() const { return itemsRead_; }
  void failCommits(unsigned count) { commitsToFail_ = count; }
  /// The next commit puts the new package in place, closes, and throws anyway.
  void failNextFlush() { failsFlush_ = true; }
  /// What fileSize() says until the package is closed; else the bytes of names and items.
  void pretendFileSize(std::uint64_t size) { fileSize_ = size; }
  /// The stream of an item that was added.
  opc::interfaces::CompressionType compressionOf(opc::interfaces::ItemIndex item) const;

  void open(opc::interfaces::OpenMode mode) override;
  bool isOpen() const noexcept override { return isOpen_; }
  void close(bool discard) override;
  std::string description() const override { return "memory.kraddon"; }
  std::uint64_t fileSize() const override { return fileSize_; }

  std::size_t itemCount() const override { return items_.size(); }
  bool isRemoved(opc::interfaces::ItemIndex item) const override;
  opc::interfaces::ItemInfo itemInfo(opc::interfaces::ItemIndex item) const override;
  std::string_view itemName(opc::interfaces::ItemIndex item) const override;
  std::unique_ptr<opc::InputStream> openItem(opc::interfaces::ItemIndex item) override;
  void readItem(opc::interfaces::ItemIndex item, opc::ByteBuffer& into,
                std::uint64_t limit) override;
  opc::interfaces::ItemIndex addItem(const opc::interfaces::NewItem& item) override;
  opc::interfaces::ItemIndex addItem(
      const opc::interfaces::NewItem& item,
      std::unique_ptr<opc::interfaces::IContentSource> source) override;
  std::unique_ptr<opc::OutputStream> openForWriting(opc::interfaces::ItemIndex item) override;
  void removeItem(opc::interfaces::ItemIndex item) override;

 private:
  struct Item {
    MemoryItem stored;
    std::unique_ptr<opc::interfaces::IContentSource> source;
    opc::interfaces::CompressionType compression = opc::interfaces::CompressionType::Normal;
    bool added = false;
    bool atFront = false;
    bool removed = false;
  };

  Item& itemAt(opc::interfaces::ItemIndex item);
  void requireOpen() const;
  void requireWritable() const;
  void commit();

  MemoryDisk& disk_;
  std::deque<Item> items_;  // the addresses of names stay valid
  std::vector<std::string> itemsRead_;
  opc::interfaces::OpenMode mode_ = opc::interfaces::OpenMode::Read;
  std::uint64_t fileSize_ = 0;
  unsigned commitsToFail_ = 0;
  bool failsFlush_ = false;
  bool isOpen_ = false;
  bool changed_ = false;
};

}  // namespace test
