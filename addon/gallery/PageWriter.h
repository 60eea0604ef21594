// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string_view>

#include "addon/gallery/Page.h"

namespace addon::gallery {

/// Writes the page: one HTML document without scripts that needs no other file, and whose policy
/// forbids to load any. The same add-on always gives the same bytes. Exceptions of `sink` and
/// `images` are passed on. `home`, the address of a page that lists all add-ons, may be empty.
void writePage(const Page& page, PageImages& images,
               const std::function<void(std::string_view)>& sink, std::string_view home = {});

}  // namespace addon::gallery
