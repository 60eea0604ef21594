// SPDX-License-Identifier: MIT
#pragma once

#include "addon/build/Project.h"
#include "addon/checks/FindingRules.h"
#include "addon/packaging/AddonPackage.h"

namespace addon::build {

/// The findings that the manifest asks to be passed over. Throws ManifestError for an unknown id.
addon::checks::IgnoreRules ignoreRulesOf(const Manifest& manifest);

/// Looks up what the manifest says is in the package: files of apps and examples, folders of the
/// search path. The package holds all files. Throws ManifestError for the first by position that is
/// not there, unless `rules` pass over what `verify` would find then. What `verify` only warns of
/// (images and class paths) is left to it.
void checkReferences(const Manifest& manifest, const addon::checks::IgnoreRules& rules,
                     addon::packaging::AddonPackage& package);

}  // namespace addon::build
