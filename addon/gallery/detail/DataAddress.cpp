// SPDX-License-Identifier: MIT
#include "addon/gallery/detail/DataAddress.h"

#include <cstdint>

#include "addon/packaging/ImageSignature.h"

namespace addon::gallery::detail {

namespace {

constexpr std::string_view kDigits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// One to three bytes as four characters.
void appendGroup(std::string& text, std::span<const unsigned char> bytes) {
  std::uint32_t bits = 0;
  for (std::size_t i = 0; i < 3; ++i) bits = bits << 8 | (i < bytes.size() ? bytes[i] : 0u);
  for (std::size_t i = 0; i < 4; ++i) {
    text += i <= bytes.size() ? kDigits[bits >> (18 - 6 * i) & 63u] : '=';
  }
}

}  // namespace

std::string_view imageTypeOf(std::span<const unsigned char> bytes) {
  const std::string_view type = packaging::imageTypeOf(bytes);
  // Few browsers show it.
  return type == "image/tiff" ? std::string_view() : type;
}

std::string base64(std::span<const unsigned char> bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  while (!bytes.empty()) {
    const std::size_t size = bytes.size() < 3 ? bytes.size() : 3;
    appendGroup(text, bytes.first(size));
    bytes = bytes.subspan(size);
  }
  return text;
}

std::string dataAddress(std::string_view type, std::span<const unsigned char> bytes) {
  std::string address = "data:";
  address.append(type).append(";base64,");
  return address += base64(bytes);
}

}  // namespace addon::gallery::detail
