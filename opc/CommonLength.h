// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "opc/Words.h"

namespace opc {

/// How many bytes at the beginning of both are equal.
inline std::size_t commonLength(std::string_view a, std::string_view b) noexcept {
  const std::size_t most = std::min(a.size(), b.size());
  std::size_t at = 0;
  for (; most - at >= 8; at += 8) {
    const std::uint64_t differing = loadWord(a.data() + at) ^ loadWord(b.data() + at);
    if (differing == 0) continue;
    const int equalBits = std::endian::native == std::endian::little ? std::countr_zero(differing)
                                                                     : std::countl_zero(differing);
    return at + static_cast<std::size_t>(equalBits) / 8;
  }
  while (at < most && a[at] == b[at]) ++at;
  return at;
}

}  // namespace opc
