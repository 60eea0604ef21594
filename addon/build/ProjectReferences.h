// SPDX-License-Identifier: MIT
#pragma once

#include "addon/build/Project.h"
#include "addon/checks/FindingRules.h"
#include "addon/packaging/AddonPackage.h"

namespace addon::build {

/// Looks up what the manifest says is in the package: files of apps and examples, folders of the
/// search path. The package holds all files. Throws ManifestError for the first by position that is
/// not there, unless by `rules` what `verify` would find then is no error. What `verify` only warns
/// of (images and class paths) is left to it.
void checkReferences(const Manifest& manifest, const addon::checks::FindingRules& rules,
                     addon::packaging::AddonPackage& package);

}  // namespace addon::build
