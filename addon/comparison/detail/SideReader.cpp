// SPDX-License-Identifier: MIT
#include "addon/comparison/detail/SideReader.h"

#include <algorithm>

#include "opc/Exception.h"

namespace addon::comparison::detail {

namespace {

constexpr std::uint64_t kLargest = std::uint64_t{16} << 20;  // bytes

}  // namespace

SideItem::SideItem(addon::packaging::AddonPackage& package, const Item& item)
    : size_(item.info.size) {
  if (std::max(size_, item.info.packedSize) <= kLargest) item_ = containerItem(package, item);
}

std::optional<std::span<const unsigned char>> SideReader::read(const SideItem& item) {
  if (!reader_ || !item.item_) return std::nullopt;
  try {
    reader_->readItem(*item.item_, buffer_, kLargest);
    return buffer_.bytes();
  } catch (const opc::Exception&) {
    return std::nullopt;
  }
}

}  // namespace addon::comparison::detail
