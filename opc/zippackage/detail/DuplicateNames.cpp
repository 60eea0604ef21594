// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/DuplicateNames.h"

#include <bit>

#include "opc/Random.h"
#include "opc/Words.h"

namespace opc::zippackage::detail {

DuplicateNames::DuplicateNames() {
  fillRandom(seeds_);
}

void DuplicateNames::makeRoomFor(std::size_t count) {
  mask_ = std::bit_ceil(count * 2 + 1) - 1;
  slots_.assign(mask_ + 1, {});
}

std::uint64_t DuplicateNames::hashOf(std::string_view name) const {
  std::uint64_t state = seeds_[0] ^ foldedProduct(name.size(), 0x9E3779B97F4A7C15u);
  const char* next = name.data();
  std::size_t left = name.size();
  for (; left >= 8; left -= 8, next += 8) {
    state = foldedProduct(state ^ loadWord(next), seeds_[1] | 1);
  }
  if (left > 0) state = foldedProduct(state ^ loadTail(next, left), seeds_[1] | 1);
  return foldedProduct(state ^ seeds_[1], 0xD6E8FEB86659FD93u);
}

}  // namespace opc::zippackage::detail
