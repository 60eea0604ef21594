// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "addon/packaging/AddonPackage.h"
#include "tool/TreeWalk.h"
#include "tool/line/Arguments.h"

namespace tool {

/// A file or an empty folder of the disk, and the path that it gets in the package.
struct SourceFile {
  std::string diskPath;
  std::string path;  ///< UTF-8
  bool isFolder;
};

/// Finds what a command is to pack, as its options --exclude, --default-excludes and --follow say.
/// What they leave out is named with --verbose.
class SourceFinder {
 public:
  /// The package itself, the first operand, stays out.
  explicit SourceFinder(const line::Invocation& invocation);

  /// Whether the patterns leave out a path of the package.
  bool leavesOut(const std::string& path, bool isFolder) const;
  bool isPackage(const std::string& diskPath) const;

  /// Appends what lies below `folder` of the disk, to go below `place` in the package ("" is the
  /// top). Patterns in the folder's own .kraddonignore count for it. Throws Failure as walkTree
  /// does.
  void collect(const std::string& folder, const std::string& place,
               std::vector<SourceFile>& into) const;

 private:
  addon::project::PatternList patternsFor(const std::string& folder,
                                          const std::string& place) const;
  void report(const std::string& path) const;

  const line::Invocation& invocation_;
  addon::project::PatternList patterns_;
  std::optional<opc::FileIdentity> package_;
};

/// Adds the patterns of a folder's .kraddonignore, if it has one, for paths below `place`.
void addIgnoreFile(const std::string& folder, const std::string& place,
                   addon::project::PatternList& patterns);

/// "a/b", or just one of them when the other is empty.
std::string joinPath(std::string_view folder, std::string_view name);

/// Puts them into the open package. A folder that exists is no error. Throws Failure for a file
/// whose path is taken; with `replaces` only when it is taken by a folder.
void storeFiles(const std::vector<SourceFile>& files, bool replaces,
                addon::packaging::AddonPackage& package);

/// Makes a folder and those above it; one that exists is no error, a file is. False when it was
/// there.
bool storeFolder(const std::string& path, addon::packaging::AddonPackage& package);

}  // namespace tool
