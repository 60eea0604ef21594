// SPDX-License-Identifier: MIT
#include "opc/zippackage/DuplicateNames.h"

#include <sys/random.h>

#include <bit>
#include <cstring>
#include <ctime>

namespace opc::zippackage {
namespace {

__extension__ using Wide = unsigned __int128;

std::uint64_t mix(std::uint64_t a, std::uint64_t b) {
  const Wide product = static_cast<Wide>(a) * b;
  return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

std::uint64_t load(const char* from, std::size_t size) {
  std::uint64_t value = 0;
  std::memcpy(&value, from, size);
  return value;
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

DuplicateNames::DuplicateNames(std::size_t count)
    : mask_(std::bit_ceil(count * 2 + 1) - 1), slots_(mask_ + 1) {
  fillWithChance(seeds_);
}

std::uint64_t DuplicateNames::hashOf(std::string_view name) const {
  std::uint64_t state = seeds_[0] ^ mix(name.size(), 0x9E3779B97F4A7C15u);
  const char* next = name.data();
  std::size_t left = name.size();
  for (; left >= 8; left -= 8, next += 8) {
    state = mix(state ^ load(next, 8), seeds_[1] | 1);
  }
  if (left > 0) state = mix(state ^ load(next, left), seeds_[1] | 1);
  return mix(state ^ seeds_[1], 0xD6E8FEB86659FD93u);
}

}  // namespace opc::zippackage
