// SPDX-License-Identifier: MIT
#pragma once

#include "addon/build/Project.h"
#include "addon/checks/FindingRules.h"
#include "addon/packaging/AddonPackage.h"

namespace addon::build {

/// Looks up what the manifest says is in the package: files of apps and examples, folders of the
/// search path. The package holds all files. Throws ManifestError for the first one, by position,
/// that is missing, unless `rules` say that the finding of `verify` about it is not an error. What
/// `verify` only warns of (images and class paths) is left to it.
void checkReferences(const Manifest& manifest, const addon::checks::FindingRules& rules,
                     addon::packaging::AddonPackage& package);

}  // namespace addon::build
