// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace opc::zippackage::detail {

/// Times as the headers hold them, the date in the upper half: from 1980 to 2107, in steps of two
/// seconds. By convention they are local; here they are UTC throughout, so that bytes and times do
/// not depend on where a program runs. Seconds count from 1970.
struct DosTime {
  static constexpr std::int64_t kEarliest = 315532800;  ///< 1980-01-01 00:00:00

  /// Rounds down, and clamps to what can be said.
  static std::uint32_t fromUnix(std::int64_t seconds);
  /// A value that names no time, 0 among them, is the earliest.
  static std::int64_t toUnix(std::uint32_t dosTime);
};

}  // namespace opc::zippackage::detail
