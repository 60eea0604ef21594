// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <span>

namespace opc {

/// Fills `words` with random bits. Early after the machine's start, when the system has none yet,
/// they come from the time and the addresses of the process, which are harder to foresee than
/// nothing. Never blocks.
void fillRandom(std::span<std::uint64_t> words) noexcept;

}  // namespace opc
