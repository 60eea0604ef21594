// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/ItemPacker.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace opc::zippackage::detail {

bool ItemPacker::read(InputStream& stream, const interfaces::IContentSource& source) {
  size_ = 0;
  const std::uint64_t expected = source.size();
  return expected <= kWholeLimit && readWhole(stream, expected);
}

PackedItem ItemPacker::pack(int level, const interfaces::IContentSource& source) {
  const Bytes data = begun();
  PackedItem item{size_, updateCrc(0, data), kStored, data};
  if (level > 0 && deflater_.pack(level, data, packed_) &&
      packed_.size() >= source.leastPackedSize()) {
    item.method = kDeflated;
    item.data = packed_.bytes();
  }
  return item;
}

// False when there is more than fits.
bool ItemPacker::readWhole(InputStream& stream, std::uint64_t expected) {
  // One more byte than expected shows the end without another, larger buffer.
  const std::size_t wanted = std::max<std::size_t>(static_cast<std::size_t>(expected) + 1, 65536);
  if (input_.size() < wanted) input_.resizeForOverwrite(wanted);
  for (;;) {
    const std::size_t count = stream.read(input_.data() + size_, input_.size() - size_);
    size_ += count;
    if (count == 0) return true;
    if (size_ > kWholeLimit) return false;
    if (size_ < input_.size()) continue;
    ByteBuffer larger;
    larger.resizeForOverwrite(std::min(size_ * 2, kWholeLimit + 1));
    std::memcpy(larger.data(), input_.data(), size_);
    input_ = std::move(larger);
  }
}

}  // namespace opc::zippackage::detail
