// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "addon/packaging/AddonPackage.h"

namespace addon::build {

/// Throws BuildError unless the file at `path` can be read, and is an image of the type that its
/// name says.
void checkScreenshot(const std::string& path);

/// Stores an image of the disk as the screenshot, in the place of one that any program may have
/// made. `name` is that of the package in messages. Throws BuildError and opc::Exception; the
/// package must not be committed then.
void storeScreenshot(packaging::AddonPackage& package, const std::string& name,
                     const std::u16string& image);

}  // namespace addon::build
