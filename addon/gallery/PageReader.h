// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "addon/gallery/Page.h"
#include "addon/packaging/AddonPackage.h"

namespace addon::gallery {

/// Everything that a page shows of an open package, but for the images. `fallbackName` is what an
/// add-on without a name is called. Throws opc::Exception for a document that cannot be read.
Page readPage(packaging::AddonPackage& package, const std::string& fallbackName);

}  // namespace addon::gallery
