// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace opc {

/// Eight bytes as one number, in the machine's order.
inline std::uint64_t loadWord(const char* bytes) noexcept {
  std::uint64_t word = 0;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

/// The `count` bytes at the end of something, fewer than eight, as a number of no more than `count`
/// bytes. Copying them to a word would make the processor wait for the pieces of the copy, which is
/// most of what hashing a short text takes.
inline std::uint64_t loadTail(const char* bytes, std::size_t count) noexcept {
  const auto byte = [bytes](std::size_t at) {
    return std::uint64_t{static_cast<unsigned char>(bytes[at])};
  };
  if (count >= 4) {
    std::uint32_t first = 0;
    std::uint32_t last = 0;
    std::memcpy(&first, bytes, sizeof first);
    std::memcpy(&last, bytes + count - sizeof last, sizeof last);
    return first | std::uint64_t{last} << (8 * (count - sizeof last));
  }
  if (count == 0) return 0;
  return byte(0) | byte(count / 2) << (8 * (count / 2)) | byte(count - 1) << (8 * (count - 1));
}

/// Multiplies to 128 bits and folds the halves together.
inline std::uint64_t foldedProduct(std::uint64_t a, std::uint64_t b) noexcept {
  __extension__ using Wide = unsigned __int128;
  const Wide product = static_cast<Wide>(a) * b;
  return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

}  // namespace opc
