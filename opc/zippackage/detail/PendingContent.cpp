// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/PendingContent.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "opc/Exception.h"
#include "opc/FileIo.h"
#include "opc/TemporaryFile.h"
#include "opc/zippackage/Codec.h"

namespace opc::zippackage::detail {
namespace {

constexpr std::size_t kBlock = std::size_t{1} << 20;

class PendingStream final : public InputStream {
 public:
  explicit PendingStream(const PendingContent& content) : content_(content) {}

  std::size_t read(unsigned char* buffer, std::size_t size) override {
    // Emptied meanwhile, it may have become shorter than what was read.
    const std::uint64_t left = content_.size() - std::min(next_, content_.size());
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(size, left));
    content_.read(next_, buffer, count);
    next_ += count;
    return count;
  }

  bool isEnd() override { return next_ >= content_.size(); }

 private:
  const PendingContent& content_;
  std::uint64_t next_ = 0;
};

}  // namespace

std::uint64_t PendingStore::spill(Bytes data) {
  if (!file_) file_ = createNamelessFile(folder_);
  if (!file_) throw SystemError("cannot make a temporary file in '" + folder_ + "'", errno);
  const std::uint64_t place = fileSize_;
  writeFully(file_.get(), place, data.data(), data.size(), "cannot write to a temporary file");
  fileSize_ += data.size();
  return place;
}

void PendingStore::readSpilled(std::uint64_t offset, unsigned char* into, std::size_t size) const {
  readFully(file_.get(), offset, into, size, "cannot read a temporary file");
}

void PendingStore::turnTo(PendingContent& content) {
  if (growing_ == &content) return;
  if (growing_ != nullptr && isMemoryShort()) growing_->spillMemory();
  growing_ = &content;
}

void PendingStore::forget(const PendingContent& content) {
  if (growing_ == &content) growing_ = nullptr;
}

PendingContent::~PendingContent() {
  freeMemory();
  store_.forget(*this);
}

void PendingContent::clear() {
  freeMemory();
  extents_.clear();
  spilled_ = 0;
}

void PendingContent::append(Bytes data) {
  if (data.empty()) return;
  store_.turnTo(*this);
  if (!hasRoomFor(data.size())) {
    spillMemory();
    if (data.size() >= kBlock) return spill(data);
  }
  keep(data);
}

void PendingContent::spillMemory() {
  spill(memory_);
  freeMemory();
}

// What is reserved counts, not what is used: it may be twice as much.
void PendingContent::keep(Bytes data) {
  const std::size_t before = memory_.capacity();
  memory_.insert(memory_.end(), data.begin(), data.end());
  store_.countInMemory(memory_.capacity(), before);
}

void PendingContent::freeMemory() {
  store_.countInMemory(0, memory_.capacity());
  std::vector<unsigned char>().swap(memory_);
}

// Once something is in the file, memory only gathers blocks for it.
bool PendingContent::hasRoomFor(std::size_t size) const {
  const bool isGathering = spilled_ > 0 || store_.isMemoryShort();
  const std::size_t limit = isGathering ? kBlock : kWholeLimit;
  return size <= limit && memory_.size() <= limit - size;
}

void PendingContent::spill(Bytes data) {
  if (data.empty()) return;
  const std::uint64_t place = store_.spill(data);
  const bool continues = !extents_.empty() && extents_.back().place + extents_.back().size == place;
  if (continues) {
    extents_.back().size += data.size();
  } else {
    extents_.push_back({spilled_, place, data.size()});
  }
  spilled_ += data.size();
}

void PendingContent::read(std::uint64_t offset, unsigned char* into, std::size_t size) const {
  if (offset < spilled_) {
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(size, spilled_ - offset));
    readExtents(offset, into, count);
    into += count;
    offset += count;
    size -= count;
  }
  if (size > 0) std::memcpy(into, memory_.data() + (offset - spilled_), size);
}

void PendingContent::readExtents(std::uint64_t offset, unsigned char* into,
                                 std::size_t size) const {
  auto extent = std::upper_bound(extents_.begin(), extents_.end(), offset,
                                 [](std::uint64_t at, const Extent& e) { return at < e.start; });
  for (--extent; size > 0; ++extent) {
    const std::uint64_t skip = offset - extent->start;
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(size, extent->size - skip));
    store_.readSpilled(extent->place + skip, into, count);
    into += count;
    offset += count;
    size -= count;
  }
}

std::unique_ptr<InputStream> PendingContent::getInputStream() {
  return std::make_unique<PendingStream>(*this);
}

}  // namespace opc::zippackage::detail
