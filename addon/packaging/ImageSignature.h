// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <span>
#include <string>
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

/// Why a file with this name and these first bytes is not an image of an add-on, which is PNG, GIF,
/// TIFF, BMP or JPEG, of the format that its name says; "" if it is. A name may say nothing.
std::string imageFault(std::string_view name, opc::InputStream& stream);
/// The same for a screenshot, which is stored under the type that its name says, as JPEG if none.
std::string screenshotFault(std::string_view name, opc::InputStream& stream);

/// Whether it is one of the types that imageTypeOf() recognises.
bool isImageTypeTold(std::string_view type);

}  // namespace addon::packaging
