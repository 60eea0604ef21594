// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "addon/project/Patterns.h"
#include "opc/FileIdentity.h"
#include "opc/interfaces/Progress.h"
#include "opc/plservices/FileContentSource.h"

namespace addon::build {

/// Of files that may exist, and of their folders: whether one that nothing else lies in is empty
/// depends on whether the file is there yet.
std::vector<opc::FileIdentity> withFolders(const std::vector<std::string>& files);

struct TreeWalkOptions {
  addon::project::PatternList excludes;  ///< for paths in the package
  std::string place = {};                ///< of the folder's content in the package; "" is the top
  bool followsOutside = false;           ///< follow links that lead out of the folder
  std::string project = {};              ///< a folder that links may lead into, too; may be ""
  std::vector<opc::FileIdentity>
      leftOut;  ///< files and empty folders that are not part of the tree
  /// Asked about everything but folders that are not empty, by paths in the package; may be empty.
  std::function<bool(const std::string& path, bool isFolder)> includes = nullptr;
  /// Gets paths in the package; may be empty.
  std::function<void(const std::string& path, bool isFolder)> onExcluded = nullptr;
  /// The same for what `leftOut` names.
  std::function<void(const std::string& path, bool isFolder)> onLeftOut = nullptr;
  opc::interfaces::StopFunction stop = nullptr;  ///< may be empty
};

/// Something to be packed. The path is UTF-8, relative to the folder, with '/'.
struct WalkedEntry {
  std::string path;
  bool isFolder;  ///< an empty folder
  /// Of a file, if the walk had to look at it anyway.
  std::optional<opc::plservices::FileFacts> facts = std::nullopt;
};

/// Where a path of the disk below `folder` lies, in the words of whoever named the folder: "." adds
/// nothing, and a slash at its end stays the only one. "" is the folder itself.
std::string onDisk(const std::string& folder, const std::string& path);

/// All files and all empty folders below `folder`, depth first, in order of their names' UTF-16
/// code units, so that the order on the disk does not show. Temporary files that a killed run of
/// the program left behind are excluded. Links are followed when they lead inside `folder`. Throws
/// BuildError, naming the path, for a link that leads out, to nothing or in a circle, for anything
/// that is neither file nor folder, and for a name that is not UTF-8.
std::vector<WalkedEntry> walkTree(const std::string& folder, const TreeWalkOptions& options);

}  // namespace addon::build
