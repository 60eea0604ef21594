// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "addon/build/SourceFiles.h"
#include "tool/line/Arguments.h"

namespace tool::commands::detail {

/// Finds what a command is to pack, as its options --exclude, --default-excludes and --follow say.
/// What they leave out is named with --verbose.
class SourceFinder {
 public:
  /// The package itself, the first operand, stays out.
  explicit SourceFinder(const line::Invocation& invocation);

  /// Whether the patterns leave out a path of the package.
  bool leavesOut(const std::string& path, bool isFolder) const;
  bool isPackage(const std::string& diskPath) const;

  /// Appends what lies below `folder` on disk, to go below `place` in the package ("" is the
  /// top). Patterns in the folder's own .kraddonignore count for it. Throws BuildError as walkTree
  /// does.
  void collect(const std::string& folder, const std::string& place,
               std::vector<addon::build::SourceFile>& into) const;

 private:
  addon::build::SourceChoice choice_;
  addon::project::PatternList patterns_;
  std::optional<opc::FileIdentity> package_;
};

}  // namespace tool::commands::detail
