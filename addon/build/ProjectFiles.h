// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "addon/build/Project.h"
#include "addon/build/SourceFiles.h"

namespace addon::build {

/// What has a say in which files go in, beside the manifest.
struct FileChoice {
  std::vector<std::string> excludes = {};  ///< patterns, after all others
  bool followsOutside = false;             ///< links that lead out of the folder
  std::vector<std::string> leftOut = {};   ///< files of the disk, wherever they lie
  /// Told of each file or folder that stays out, and why; may be empty.
  std::function<void(const std::string& path, const std::string& why)> onLeftOut = nullptr;
  opc::interfaces::StopFunction stop = nullptr;  ///< may be empty
};

/// The files and empty folders below the manifest's root that go in. Throws BuildError as walkTree
/// does, ManifestError for a root that is not a folder.
std::vector<SourceFile> treeOf(const Project& project, const FileChoice& choice);

/// Adds the files from elsewhere to the package, which holds those of the tree. Throws
/// ManifestError for one that cannot be read or whose place is taken.
void storeAddedFiles(const Project& project, const opc::interfaces::StopFunction& stop,
                     addon::packaging::AddonPackage& package);

}  // namespace addon::build
