// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "addon/gallery/Page.h"
#include "addon/packaging/AddonPackage.h"

namespace addon::gallery {

/// Reads everything that a page shows, except the images. `fallbackName` stands in for a missing
/// name. Throws opc::Exception if a document cannot be read. The package must stay open and
/// unchanged as long as the page is used.
Page readPage(packaging::AddonPackage& package, const std::string& fallbackName);

}  // namespace addon::gallery
