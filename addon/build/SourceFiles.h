// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "addon/build/TreeWalk.h"
#include "addon/packaging/AddonPackage.h"
#include "opc/plservices/FileContentSource.h"

namespace addon::build {

/// A file or an empty folder of the disk, and the path that it gets in the package.
struct SourceFile {
  std::string diskPath;
  std::string path;  ///< UTF-8
  bool isFolder;
  std::optional<opc::plservices::FileFacts> facts = std::nullopt;  ///< if they are known
};

/// Adds the patterns of a folder's .kraddonignore, if it has one, for paths below `place`.
void addIgnoreFile(const std::string& folder, const std::string& place,
                   addon::project::PatternList& patterns);

/// "a/b", or just one of them when the other is empty.
std::string joinPath(std::string_view folder, std::string_view name);

/// What of a folder is to be packed.
struct SourceChoice {
  std::vector<std::string> excludes = {};  ///< patterns, after those of the folder
  bool leavesOutUsual = false;             ///< files of version control systems and editors
  bool followsOutside = false;             ///< links that lead out of the folder
  std::string package = {};                ///< the package itself, which stays out
  /// Told of each path of the package that stays out; may be empty.
  std::function<void(const std::string& path)> onLeftOut = nullptr;
  opc::interfaces::StopFunction stop = nullptr;  ///< may be empty
};

/// The patterns of the choice for paths in the package, with those in the .kraddonignore of
/// `folder`, which goes below `place`. Both may be "".
addon::project::PatternList patternsOf(const SourceChoice& choice, const std::string& folder,
                                       const std::string& place);

/// What lies below `folder` of the disk, to go below `place` in the package ("" is the top). Throws
/// BuildError as walkTree does.
std::vector<SourceFile> sourcesBelow(const std::string& folder, const std::string& place,
                                     const SourceChoice& choice);

/// Puts them into the open package. Ignores folders that already exist. Throws BuildError for
/// a file whose path is taken; with `replaces` only when it is taken by a folder.
void storeFiles(const std::vector<SourceFile>& files, bool replaces,
                addon::packaging::AddonPackage& package,
                const opc::interfaces::StopFunction& stop = nullptr);

/// Puts a file with this content into the open package. Throws BuildError as storeFiles does.
void storeContent(std::unique_ptr<opc::plservices::FileContentSource> content,
                  const std::string& path, bool replaces, addon::packaging::AddonPackage& package);
void storeContent(std::string content, const std::string& path, bool replaces,
                  addon::packaging::AddonPackage& package);

/// Makes a folder and those above it. Throws BuildError if a file is in its place. False if it was
/// there.
bool storeFolder(const std::string& path, addon::packaging::AddonPackage& package);

/// Their paths in the package, those of folders with a '/' at the end.
std::vector<std::string> pathsOf(const std::vector<SourceFile>& files);

}  // namespace addon::build
