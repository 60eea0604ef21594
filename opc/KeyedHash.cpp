// SPDX-License-Identifier: MIT
#include "opc/KeyedHash.h"

#include <array>

#include "opc/Random.h"

namespace opc {

const KeyedHash::Key& KeyedHash::key() noexcept {
  static const Key key = [] {
    std::array<std::uint64_t, 3> random{};
    fillRandom(random);
    return Key{random[0], random[1] | 1, random[2] | 1};
  }();
  return key;
}

std::uint64_t keyedHash(std::string_view bytes, std::uint64_t salt) noexcept {
  KeyedHash hash(salt);
  const char* next = bytes.data();
  std::size_t left = bytes.size();
  for (; left >= 8; left -= 8, next += 8) hash.add(loadWord(next));
  if (left > 0) hash.add(loadTail(next, left));
  return hash.finish(bytes.size());
}

}  // namespace opc
