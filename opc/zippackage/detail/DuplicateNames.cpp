// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/DuplicateNames.h"

#include <sys/random.h>

#include <bit>
#include <ctime>

#include "opc/Words.h"

namespace opc::zippackage::detail {
namespace {

__extension__ using Wide = unsigned __int128;

std::uint64_t mix(std::uint64_t a, std::uint64_t b) {
  const Wide product = static_cast<Wide>(a) * b;
  return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

void fillWithChance(std::uint64_t (&seeds)[2]) {
  if (::getrandom(seeds, sizeof seeds, GRND_NONBLOCK) == sizeof seeds) return;
  // Early after the machine's start there may be none yet; the address space is random too.
  std::timespec now{};
  std::timespec_get(&now, TIME_UTC);
  seeds[0] = mix(static_cast<std::uint64_t>(now.tv_nsec) + 1, 0x9E3779B97F4A7C15u);
  seeds[1] = reinterpret_cast<std::uintptr_t>(&seeds);
}

}  // namespace

DuplicateNames::DuplicateNames() {
  fillWithChance(seeds_);
}

void DuplicateNames::makeRoomFor(std::size_t count) {
  mask_ = std::bit_ceil(count * 2 + 1) - 1;
  slots_.assign(mask_ + 1, {});
}

std::uint64_t DuplicateNames::hashOf(std::string_view name) const {
  std::uint64_t state = seeds_[0] ^ mix(name.size(), 0x9E3779B97F4A7C15u);
  const char* next = name.data();
  std::size_t left = name.size();
  for (; left >= 8; left -= 8, next += 8) {
    state = mix(state ^ loadWord(next), seeds_[1] | 1);
  }
  if (left > 0) state = mix(state ^ loadTail(next, left), seeds_[1] | 1);
  return mix(state ^ seeds_[1], 0xD6E8FEB86659FD93u);
}

}  // namespace opc::zippackage::detail
