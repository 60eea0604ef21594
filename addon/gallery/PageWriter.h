// SPDX-License-Identifier: MIT
#pragma once

#include "addon/gallery/HtmlWriter.h"
#include "addon/gallery/Page.h"

namespace addon::gallery {

/// Writes the page: one HTML document that needs no script and no other file, and forbids itself to
/// load any. The same add-on always gives the same bytes. What `sink` and `images` throw passes
/// through.
void writePage(const Page& page, PageImages& images, const HtmlWriter::Sink& sink);

}  // namespace addon::gallery
