// SPDX-License-Identifier: MIT
#pragma once

#include "addon/packaging/AddonPackage.h"
#include "tool/Project.h"

namespace tool {

/// Stores every document that the manifest asks for, but for the properties, and the screenshot.
/// Throws ManifestError for what the manifest names and is not there.
void storeDocuments(const Project& project, addon::packaging::AddonPackage& package);

}  // namespace tool
