// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <span>

namespace opc::zippackage {

using Bytes = std::span<const unsigned char>;

/// Numbers as ZIP stores them. The compiler makes one load or store of each.
constexpr std::uint16_t load16(const unsigned char* at) {
  return static_cast<std::uint16_t>(at[0] | (at[1] << 8));
}
constexpr std::uint32_t load32(const unsigned char* at) {
  return load16(at) | (static_cast<std::uint32_t>(load16(at + 2)) << 16);
}
constexpr std::uint64_t load64(const unsigned char* at) {
  return load32(at) | (static_cast<std::uint64_t>(load32(at + 4)) << 32);
}

constexpr void store16(unsigned char* at, std::uint16_t value) {
  at[0] = static_cast<unsigned char>(value);
  at[1] = static_cast<unsigned char>(value >> 8);
}
constexpr void store32(unsigned char* at, std::uint32_t value) {
  store16(at, static_cast<std::uint16_t>(value));
  store16(at + 2, static_cast<std::uint16_t>(value >> 16));
}
constexpr void store64(unsigned char* at, std::uint64_t value) {
  store32(at, static_cast<std::uint32_t>(value));
  store32(at + 4, static_cast<std::uint32_t>(value >> 32));
}

}  // namespace opc::zippackage
