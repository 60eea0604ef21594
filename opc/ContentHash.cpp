// SPDX-License-Identifier: MIT
#include "opc/ContentHash.h"

#include <algorithm>
#include <cstring>

#include "opc/Random.h"

namespace opc {
namespace {

__extension__ using Sum = unsigned __int128;

constexpr std::size_t kWords = 128;
constexpr std::uint64_t kPrime = (std::uint64_t{1} << 61) - 1;

struct Key {
  std::array<std::uint64_t, kWords> block;
  std::array<std::uint64_t, 2> chain;
};

const Key& key() {
  static const Key key = [] {
    std::array<std::uint64_t, kWords + 2> random{};
    fillRandom(random);
    Key made{};
    std::copy_n(random.begin(), kWords, made.block.begin());
    std::copy_n(random.begin() + kWords, 2, made.chain.begin());
    for (std::uint64_t& factor : made.chain) factor %= kPrime;
    return made;
  }();
  return key;
}

std::uint64_t modulo(Sum value) {
  const auto folded =
      static_cast<std::uint64_t>(value & kPrime) + static_cast<std::uint64_t>(value >> 61);
  return folded >= kPrime ? folded - kPrime : folded;
}

}  // namespace

// A block becomes 128 bits by NH, the universal hash of UMAC (RFC 4418, 5.2); these are the
// coefficients of two polynomials, each evaluated at a secret point.
void ContentHash::addBlock(const unsigned char* block) {
  const Key& secret = key();
  Sum sum = 0;
  for (std::size_t i = 0; i < kWords; i += 2) {
    std::uint64_t words[2];
    std::memcpy(words, block + i * sizeof words[0], sizeof words);
    sum += static_cast<Sum>(words[0] + secret.block[i]) * (words[1] + secret.block[i + 1]);
  }
  for (int shift = 0; shift < 128; shift += 32) {
    const auto part = static_cast<std::uint32_t>(sum >> shift);
    for (std::size_t i = 0; i < state_.size(); ++i) {
      state_[i] = modulo(static_cast<Sum>(state_[i]) * secret.chain[i] + part);
    }
  }
}

void ContentHash::update(std::span<const unsigned char> data) {
  while (!data.empty()) {
    if (used_ == 0 && data.size() >= kBlock) {
      addBlock(data.data());
      data = data.subspan(kBlock);
      continue;
    }
    const std::size_t count = std::min(data.size(), kBlock - used_);
    std::memcpy(begun_.data() + used_, data.data(), count);
    data = data.subspan(count);
    used_ += count;
    if (used_ < kBlock) return;
    addBlock(begun_.data());
    used_ = 0;
  }
}

ContentHash::Value ContentHash::finish() {
  if (used_ > 0) {
    std::fill(begun_.begin() + static_cast<std::ptrdiff_t>(used_), begun_.end(), 0);
    addBlock(begun_.data());
  }
  return state_;
}

ContentHash::Value contentHash(std::span<const unsigned char> data) {
  ContentHash hash;
  hash.update(data);
  return hash.finish();
}

}  // namespace opc
