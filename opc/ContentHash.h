// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace opc {

/// A hash of 128 bits under a key that is random in each process, at about the speed of memory. As
/// long as hashes stay in the process, two different contents of the same length have the same one
/// with a probability of at most 2^-60, even if an attacker chose them. Does not distinguish
/// contents of different lengths.
class ContentHash {
 public:
  using Value = std::array<std::uint64_t, 2>;

  void update(std::span<const unsigned char> data);
  /// Once only.
  Value finish();

 private:
  static constexpr std::size_t kBlock = 1024;

  void addBlock(const unsigned char* block);

  Value state_{};
  std::size_t used_ = 0;
  std::array<unsigned char, kBlock> begun_;
};

/// The hash of one block of memory.
ContentHash::Value contentHash(std::span<const unsigned char> data);

}  // namespace opc
