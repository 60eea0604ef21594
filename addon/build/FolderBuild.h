// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "addon/build/ProjectFiles.h"
#include "addon/build/ProjectReferences.h"
#include "opc/interfaces/Background.h"
#include "opc/interfaces/Progress.h"

namespace addon::build {

/// Puts everything that the manifest asks for into a new package, which is open and has its
/// properties. Throws ManifestError, BuildError and opc::Exception.
void fillPackage(const Project& project, const FileChoice& choice,
                 const addon::checks::FindingRules& rules, addon::packaging::AddonPackage& package);

/// What buildInto needs beside the folder.
struct FolderBuildOptions {
  /// Files of the disk that do not go in wherever they lie, such as the package that was made from
  /// the folder before.
  std::vector<std::string> leftOut = {};
  opc::interfaces::BackgroundStarter background = nullptr;  ///< may be empty
  opc::interfaces::StopFunction stop = nullptr;             ///< called often; may be empty
};

/// Writes the package that `build` would make from a folder with a manifest to `package`, which
/// must not exist: stored instead of packed, and not checked by `verify`. Throws opc::Exception,
/// among them ManifestError for every fault of the manifest.
void buildInto(const std::string& folder, const std::string& package,
               const FolderBuildOptions& buildOptions);

}  // namespace addon::build
