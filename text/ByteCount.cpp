// SPDX-License-Identifier: MIT
#include "text/ByteCount.h"

#include <array>

namespace text {

std::string describeBytes(std::uint64_t bytes) {
  static constexpr std::array kUnits{" kB", " MB", " GB", " TB", " PB", " EB"};
  if (bytes < 1000) return std::to_string(bytes) + " B";
  std::size_t unit = 0;
  std::uint64_t scale = 1000;  // in bytes
  // What would be rounded to 1000 of a unit is 1.0 of the next.
  while (unit + 1 < kUnits.size() && bytes / (scale / 1000) >= 999500) {
    scale *= 1000;
    ++unit;
  }
  const std::uint64_t tenths = (bytes / (scale / 1000) + 50) / 100;
  if (tenths < 100) {
    return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + kUnits[unit];
  }
  const std::uint64_t whole = (bytes / (scale / 1000) + 500) / 1000;
  return std::to_string(whole) + kUnits[unit];
}

std::string grouped(std::uint64_t count) {
  std::string text = std::to_string(count);
  for (std::size_t at = text.size(); at > 3; at -= 3) text.insert(at - 3, 1, ',');
  return text;
}

std::string counted(std::uint64_t count, std::string_view noun, Digits digits) {
  std::string text = digits == Digits::Grouped ? grouped(count) : std::to_string(count);
  text.append(" ").append(noun);
  if (count != 1) text += 's';
  return text;
}

}  // namespace text
