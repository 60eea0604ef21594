// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

namespace addon::catalogue {

// What a package may be at most to get into a catalogue, so that no package of a stranger holds up
// the others.
inline constexpr std::uint64_t kMaxPackageSize = 2'000'000'000;   ///< bytes
inline constexpr std::uint64_t kMaxContentSize = 16'000'000'000;  ///< bytes, unpacked
inline constexpr std::uint64_t kMaxItems = 200'000;               ///< parts and everything else
inline constexpr std::size_t kMaxRecordSize = 256'000;            ///< bytes of JSON
inline constexpr std::uint64_t kMaxImageSize = 4'000'000;         ///< the screenshot's bytes

}  // namespace addon::catalogue
