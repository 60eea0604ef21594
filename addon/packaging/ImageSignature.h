// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "opc/Streams.h"

namespace addon::packaging {

/// How many bytes of an image are enough to tell what it is.
inline constexpr std::size_t kImageSignatureSize = 12;

/// The media type of an image, recognised by its first bytes, never by its name: PNG, GIF, JPEG,
/// BMP, TIFF or WebP; "" for anything else.
std::string_view imageTypeOf(std::span<const unsigned char> bytes);
/// The same for the next bytes of `stream`. Throws what the stream throws.
std::string_view imageTypeOf(opc::InputStream& stream);

/// Whether it is one of the types that imageTypeOf() tells.
bool isImageTypeTold(std::string_view type);

}  // namespace addon::packaging
