// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string_view>

#include "addon/gallery/Page.h"

namespace addon::gallery {

/// Writes the page: one HTML document without scripts that needs no other file, and whose policy
/// forbids to load any. The same add-on always gives the same bytes. Exceptions of `sink` and
/// `images` are passed on.
void writePage(const Page& page, PageImages& images,
               const std::function<void(std::string_view)>& sink);

}  // namespace addon::gallery
