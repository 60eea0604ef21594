// SPDX-License-Identifier: MIT
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace addon::gallery::detail {

/// The media type of an image that browsers show, recognised by its first bytes: PNG, JPEG, GIF,
/// WebP or BMP; "" for anything else. SVG is left out on purpose: it is a document, whose nested
/// entities can exhaust a reader's memory.
std::string_view imageTypeOf(std::span<const unsigned char> bytes);

std::string base64(std::span<const unsigned char> bytes);

/// "data:TYPE;base64,..."
std::string dataAddress(std::string_view type, std::span<const unsigned char> bytes);

}  // namespace addon::gallery::detail
