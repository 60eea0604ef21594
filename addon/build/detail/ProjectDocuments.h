// SPDX-License-Identifier: MIT
#pragma once

#include "addon/build/Project.h"
#include "addon/packaging/AddonPackage.h"

namespace addon::build::detail {

/// Stores every document that the manifest asks for, but for the properties, and the screenshot.
/// Throws ManifestError for what the manifest names and is not there.
void storeDocuments(const Project& project, addon::packaging::AddonPackage& package);

}  // namespace addon::build::detail
