// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <span>

namespace opc {

/// Fills `words` with random bits from getrandom(). If the kernel has no random bits yet, shortly
/// after boot, they are derived from the clock, the process id and an address, which are not
/// secret. Never blocks.
void fillRandom(std::span<std::uint64_t> words) noexcept;

}  // namespace opc
