// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

namespace addon::catalogue {

// What a package may be at most to get into a catalogue, so that no package of a stranger holds up
// the others.
inline constexpr std::uint64_t kLargestPackage = std::uint64_t{2} << 30;   ///< bytes
inline constexpr std::uint64_t kLargestContent = std::uint64_t{16} << 30;  ///< bytes, unpacked
inline constexpr std::uint64_t kMostItems = 200'000;       ///< parts and everything else
inline constexpr std::size_t kLongestRecord = 256u << 10;  ///< bytes of JSON
inline constexpr std::uint64_t kLargestImage = std::uint64_t{4} << 20;  ///< the screenshot's bytes

}  // namespace addon::catalogue
