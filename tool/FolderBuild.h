// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "tool/ProjectFiles.h"
#include "tool/ProjectReferences.h"

namespace tool {

/// Puts everything that the manifest asks for into a new package, which is open and has its
/// properties. Throws ManifestError, Failure and opc::Exception.
void fillPackage(const Project& project, const FileChoice& choice,
                 const addon::checks::IgnoreRules& rules, addon::packaging::AddonPackage& package);

/// Writes the package that `build` would make of a folder with a manifest to `package`, which must
/// not exist: stored instead of packed, and not checked by `verify`. `leftOut` are files of the
/// disk that do not go in wherever they lie, such as the package that was made of the folder
/// before. Throws Failure and opc::Exception, among them for every fault of the manifest.
void buildInto(const std::string& folder, const std::string& package,
               const std::vector<std::string>& leftOut = {});

}  // namespace tool
