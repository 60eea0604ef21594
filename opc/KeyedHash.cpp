// SPDX-License-Identifier: MIT
#include "opc/KeyedHash.h"

#include <array>
#include <bit>

#include "opc/Random.h"
#include "opc/Words.h"

namespace opc {
namespace {

struct SipState {
  std::uint64_t v0, v1, v2, v3;

  explicit SipState(const std::array<std::uint64_t, 2>& key) noexcept
      : v0(key[0] ^ 0x736f6d6570736575u),
        v1(key[1] ^ 0x646f72616e646f6du),
        v2(key[0] ^ 0x6c7967656e657261u),
        v3(key[1] ^ 0x7465646279746573u) {}

  void round() noexcept {
    v0 += v1;
    v1 = std::rotl(v1, 13) ^ v0;
    v0 = std::rotl(v0, 32);
    v2 += v3;
    v3 = std::rotl(v3, 16) ^ v2;
    v0 += v3;
    v3 = std::rotl(v3, 21) ^ v0;
    v2 += v1;
    v1 = std::rotl(v1, 17) ^ v2;
    v2 = std::rotl(v2, 32);
  }

  void absorb(std::uint64_t word) noexcept {
    v3 ^= word;
    round();
    v0 ^= word;
  }

  std::uint64_t finish() noexcept {
    v2 ^= 0xff;
    round();
    round();
    round();
    return v0 ^ v1 ^ v2 ^ v3;
  }
};

}  // namespace

std::uint64_t keyedHash(std::string_view bytes, std::uint64_t salt) noexcept {
  static const std::array<std::uint64_t, 2> key = [] {
    std::array<std::uint64_t, 2> words{};
    fillRandom(words);
    return words;
  }();
  SipState state(key);
  state.absorb(salt);
  const std::uint64_t length = bytes.size();
  for (; bytes.size() >= 8; bytes.remove_prefix(8)) state.absorb(loadWord(bytes.data()));
  state.absorb(loadTail(bytes.data(), bytes.size()) | (length << 56));
  return state.finish();
}

}  // namespace opc
