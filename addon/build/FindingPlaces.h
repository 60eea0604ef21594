// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "addon/build/Project.h"
#include "addon/checks/PackageVerdict.h"

namespace addon::build {

/// A path of the disk as the current folder has it, so that other programs find the file; the same
/// path if that is not possible.
std::string fromCurrentFolder(const std::string& path);

/// The place of a fault in a project's manifest.
addon::checks::SourcePlace placeOf(const ManifestError& error, const std::string& manifest);

/// Sets the places of the findings about a package that was made from a project: the key of the
/// manifest or the file that the finding is about. For what is missing the place is the table that
/// lacks it. propertiesOf() and fillPackage() have been called.
void locateFindings(const Project& project, addon::checks::PackageVerdict& verdict);

}  // namespace addon::build
