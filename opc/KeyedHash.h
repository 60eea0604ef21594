// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string_view>

namespace opc {

/// SipHash-1-3 under a key that is drawn once a process. Names come from strangers: with a known
/// hash function they could be chosen so that all of them collide.
std::uint64_t keyedHash(std::string_view bytes, std::uint64_t salt) noexcept;

}  // namespace opc
