// SPDX-License-Identifier: MIT
#include "opc/KeyedHash.h"

#include <unistd.h>

#include <bit>
#include <chrono>

#include "opc/Words.h"

namespace opc {
namespace {

struct Key {
  std::uint64_t low = 0;
  std::uint64_t high = 0;
};

Key drawKey() noexcept {
  Key key;
  if (::getentropy(&key, sizeof key) == 0) return key;
  // Without a source of entropy a key that is hard to foresee has to do.
  const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
  return {static_cast<std::uint64_t>(now), static_cast<std::uint64_t>(::getpid())};
}

struct SipState {
  std::uint64_t v0, v1, v2, v3;

  explicit SipState(const Key& key) noexcept
      : v0(key.low ^ 0x736f6d6570736575u),
        v1(key.high ^ 0x646f72616e646f6du),
        v2(key.low ^ 0x6c7967656e657261u),
        v3(key.high ^ 0x7465646279746573u) {}

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
  static const Key key = drawKey();
  SipState state(key);
  state.absorb(salt);
  const std::uint64_t length = bytes.size();
  for (; bytes.size() >= 8; bytes.remove_prefix(8)) state.absorb(loadWord(bytes.data()));
  state.absorb(loadTail(bytes.data(), bytes.size()) | (length << 56));
  return state.finish();
}

}  // namespace opc
