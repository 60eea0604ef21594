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

/// The identities of those of `files` that exist, and of their folders: whether a folder that
/// contains nothing else is empty depends on whether the file exists yet.
std::vector<opc::FileIdentity> withFolders(const std::vector<std::string>& files);

struct TreeWalkOptions {
  addon::project::PatternList excludes;  ///< for paths in the package
  std::string place = {};                ///< of the folder's content in the package; "" is the top
  bool followsOutside = false;           ///< follow links that lead out of the folder
  std::string project = {};              ///< a folder that links may lead into, too; may be ""
  std::vector<opc::FileIdentity>
      leftOut;  ///< files and empty folders that are not part of the tree
  /// Called with the path in the package of every entry but folders that are not empty. Returns
  /// whether it belongs to the tree. May be empty.
  std::function<bool(const std::string& path, bool isFolder)> includes = nullptr;
  /// Called with the path in the package of everything that is excluded; may be empty.
  std::function<void(const std::string& path, bool isFolder)> onExcluded = nullptr;
  /// The same for the entries of `leftOut`.
  std::function<void(const std::string& path, bool isFolder)> onLeftOut = nullptr;
  opc::interfaces::StopFunction stop = nullptr;  ///< may be empty
};

/// A file or an empty folder to be packed. The path is UTF-8, relative to the folder, with '/'.
struct WalkedEntry {
  std::string path;
  bool isFolder;  ///< an empty folder
  /// Set for a file if the walk had to read its status anyway.
  std::optional<opc::plservices::FileFacts> facts = std::nullopt;
};

/// The path on disk of `path`, which is relative to `folder`. Keeps the spelling of `folder`, but
/// adds nothing for "." and no second slash. An empty `path` is the folder itself.
std::string onDisk(const std::string& folder, const std::string& path);

/// All files and all empty folders below `folder`, depth first, in the order of the UTF-16 code
/// units of their names, whatever their order on disk. Lock files are skipped; temporary files that
/// a killed run of the program left are excluded. Links are followed if they lead inside `folder`
/// or `project`, or if `followsOutside` is set. Throws BuildError, naming the path, for any other
/// link, for a link to nothing or to a folder that contains it, for anything that is neither a file
/// nor a folder, and for a name that is not UTF-8.
std::vector<WalkedEntry> walkTree(const std::string& folder, const TreeWalkOptions& options);

}  // namespace addon::build
