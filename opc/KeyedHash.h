// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string_view>

#include "opc/Words.h"

namespace opc {

/// A hash under a key that is random in each process. Names are untrusted: with a known hash
/// function they could be chosen so that all of them collide.
class KeyedHash {
 public:
  /// Different salts give unrelated hashes.
  explicit KeyedHash(std::uint64_t salt) noexcept : key_(key()), state_(salt ^ key_.start) {}

  void add(std::uint64_t word) noexcept { state_ = foldedProduct(state_ ^ word, key_.word); }
  /// `length`, in bytes, distinguishes texts with the same words, such as "a" and "a\0".
  std::uint64_t finish(std::uint64_t length) const noexcept {
    return foldedProduct(state_ ^ length, key_.end);
  }

 private:
  struct Key {
    std::uint64_t start;
    std::uint64_t word;
    std::uint64_t end;
  };
  static const Key& key() noexcept;

  const Key& key_;
  std::uint64_t state_;
};

/// The hash of a text.
std::uint64_t keyedHash(std::string_view bytes, std::uint64_t salt = 0) noexcept;

}  // namespace opc
