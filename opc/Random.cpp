// SPDX-License-Identifier: MIT
#include "opc/Random.h"

#include <sys/random.h>
#include <unistd.h>

#include <chrono>

namespace opc {

void fillRandom(std::span<std::uint64_t> words) noexcept {
  const ssize_t count = ::getrandom(words.data(), words.size_bytes(), GRND_NONBLOCK);
  if (count >= 0 && static_cast<std::size_t>(count) == words.size_bytes()) return;
  auto state =
      static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
  state ^= static_cast<std::uint64_t>(::getpid()) << 32;
  state ^= reinterpret_cast<std::uintptr_t>(words.data());
  for (std::uint64_t& word : words) {
    state = state * 6364136223846793005u + 1442695040888963407u;
    word = state ^ (state >> 32);
  }
}

}  // namespace opc
