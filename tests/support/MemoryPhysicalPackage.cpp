// SPDX-License-Identifier: MIT
#include "tests/support/MemoryPhysicalPackage.h"

#include <cstring>
#include <stdexcept>
#include <utility>

#include "opc/Exception.h"

namespace test {

using opc::ErrorCode;
using opc::Exception;
using opc::interfaces::IContentSource;
using opc::interfaces::ItemIndex;
using opc::interfaces::NewItem;
using opc::interfaces::OpenMode;

namespace {

// The time of a new item for which none is given.
constexpr std::int64_t kTimeOfCommit = 1'400'000'000;

// A stream that appends to an item.
class TextStream final : public opc::OutputStream {
 public:
  explicit TextStream(std::string& text) : text_(text) {}
  void write(const unsigned char* data, std::size_t size) override {
    text_.append(reinterpret_cast<const char*>(data), size);
  }

 private:
  std::string& text_;
};

}  // namespace

MemoryDisk& MemoryDisk::add(std::string name, std::string bytes) {
  if (!items) items.emplace();
  items->push_back({std::move(name), std::move(bytes)});
  return *this;
}

std::vector<std::string> MemoryDisk::names() const {
  std::vector<std::string> result;
  if (!items) return result;
  for (const MemoryItem& item : *items) result.push_back(item.name);
  return result;
}

bool MemoryDisk::has(std::string_view name) const {
  if (!items) return false;
  for (const MemoryItem& item : *items) {
    if (item.name == name) return true;
  }
  return false;
}

const std::string& MemoryDisk::bytes(std::string_view name) const {
  if (items) {
    for (const MemoryItem& item : *items) {
      if (item.name == name) return item.bytes;
    }
  }
  throw std::out_of_range("no item " + std::string(name));
}

opc::interfaces::CompressionType MemoryPhysicalPackage::compressionOf(ItemIndex item) const {
  return items_.at(item).compression;
}

void MemoryPhysicalPackage::open(OpenMode mode) {
  if (isOpen_) throw Exception(ErrorCode::InvalidState, "package 'memory.kraddon': it is open");
  if (mode != OpenMode::Create && !disk_.items) {
    throw Exception(ErrorCode::FileSystem, "cannot open 'memory.kraddon': there is no such file");
  }
  items_.clear();
  fileSize_ = 0;
  if (mode != OpenMode::Create) {
    for (const MemoryItem& item : *disk_.items) {
      items_.emplace_back();
      items_.back().stored = item;
      fileSize_ += item.name.size() + item.bytes.size();
    }
  }
  mode_ = mode;
  changed_ = mode == OpenMode::Create;
  isOpen_ = true;
}

void MemoryPhysicalPackage::close(bool discard) {
  if (!isOpen_) return;
  const bool commits = !discard && changed_;
  if (commits) commit();
  isOpen_ = false;
  items_.clear();
  if (!commits || !std::exchange(failsFlush_, false)) return;
  throw Exception(ErrorCode::FileSystem, "cannot flush the folder of 'memory.kraddon'");
}

void MemoryPhysicalPackage::commit() {
  std::vector<MemoryItem> front;
  std::vector<MemoryItem> rest;
  for (Item& item : items_) {
    if (item.removed) continue;
    if (item.source)
      item.stored.bytes = opc::StreamHelper::readToEnd(*item.source->getInputStream());
    (item.atFront ? front : rest).push_back(item.stored);
  }
  if (commitsToFail_ != 0) {
    --commitsToFail_;
    throw Exception(ErrorCode::FileSystem, "cannot write 'memory.kraddon': the disk is full");
  }
  front.insert(front.end(), rest.begin(), rest.end());
  disk_.items = std::move(front);
  ++disk_.commits;
}

bool MemoryPhysicalPackage::isRemoved(ItemIndex item) const {
  return items_.at(item).removed;
}

std::string_view MemoryPhysicalPackage::itemName(ItemIndex item) const {
  return items_.at(item).stored.name;
}

opc::interfaces::ItemInfo MemoryPhysicalPackage::itemInfo(ItemIndex item) const {
  const Item& found = items_.at(item);
  opc::interfaces::ItemInfo info;
  info.name = found.stored.name;
  info.kind = found.stored.kind;
  info.executable = found.stored.executable;
  info.modified = found.stored.modified;
  info.size = found.source ? found.source->size() : found.stored.bytes.size();
  info.packedSize = info.size;
  return info;
}

std::unique_ptr<opc::InputStream> MemoryPhysicalPackage::openItem(ItemIndex index) {
  Item& item = itemAt(index);
  itemsRead_.push_back(item.stored.name);
  if (item.source) return item.source->getInputStream();
  const std::string& bytes = item.stored.bytes;
  return std::make_unique<opc::MemoryInputStream>(
      reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
}

void MemoryPhysicalPackage::readItem(ItemIndex item, opc::ByteBuffer& into, std::uint64_t limit) {
  if (itemInfo(item).size > limit) {
    throw Exception(ErrorCode::TooLarge, "the item has " + std::to_string(itemInfo(item).size) +
                                             " bytes, more than " + std::to_string(limit));
  }
  const std::string bytes = opc::StreamHelper::readToEnd(*openItem(item));
  into.resizeForOverwrite(bytes.size());
  if (!bytes.empty()) std::memcpy(into.data(), bytes.data(), bytes.size());
}

ItemIndex MemoryPhysicalPackage::addItem(const NewItem& item) {
  return addItem(item, nullptr);
}

ItemIndex MemoryPhysicalPackage::addItem(const NewItem& item,
                                         std::unique_ptr<IContentSource> source) {
  requireWritable();
  Item added;
  added.stored.name = item.name;
  added.stored.executable = item.executable;
  added.stored.modified = item.modified.value_or(kTimeOfCommit);
  added.source = std::move(source);
  added.compression = item.compression;
  added.added = true;
  added.atFront = item.atFront;
  items_.push_back(std::move(added));
  changed_ = true;
  return items_.size() - 1;
}

std::unique_ptr<opc::OutputStream> MemoryPhysicalPackage::openForWriting(ItemIndex index) {
  requireWritable();
  Item& item = itemAt(index);
  if (!item.added || item.source) {
    throw Exception(ErrorCode::InvalidState,
                    "item '" + item.stored.name + "': it cannot be written to");
  }
  item.stored.bytes.clear();
  return std::make_unique<TextStream>(item.stored.bytes);
}

void MemoryPhysicalPackage::removeItem(ItemIndex item) {
  requireWritable();
  itemAt(item).removed = true;
  changed_ = true;
}

MemoryPhysicalPackage::Item& MemoryPhysicalPackage::itemAt(ItemIndex index) {
  requireOpen();
  Item& item = items_.at(index);
  if (item.removed) throw std::logic_error("item " + item.stored.name + " is removed");
  return item;
}

void MemoryPhysicalPackage::requireOpen() const {
  if (isOpen_) return;
  throw Exception(ErrorCode::InvalidState, "package 'memory.kraddon': it is not open");
}

void MemoryPhysicalPackage::requireWritable() const {
  requireOpen();
  if (mode_ != OpenMode::Read) return;
  throw Exception(ErrorCode::InvalidState, "package 'memory.kraddon': it was opened for reading");
}

}  // namespace test
