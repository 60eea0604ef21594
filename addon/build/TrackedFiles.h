// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <unordered_set>

#include "addon/build/Project.h"

namespace addon::build {

/// Which files of a project git tracks. They are looked up once, when this is made.
class TrackedFiles {
 public:
  explicit TrackedFiles(const Project& project);

  /// Whether the file with this path in the package comes from the project's folder, without git
  /// tracking it. False for every file if git tracks nothing in the folder, and for the files of
  /// `files.add`, since the manifest names each of them.
  bool lacks(const std::string& path) const;

 private:
  std::string root_;  ///< in front of each path of the package
  std::unordered_set<std::string> tracked_;
  std::unordered_set<std::string> added_;
};

}  // namespace addon::build
