// SPDX-License-Identifier: MIT
#include "addon/build/TrackedFiles.h"

#include <filesystem>

#include "addon/project/GitFacts.h"

namespace addon::build {

namespace {

/// What precedes a path of the package to give its path from the project's folder: "" or "src/".
/// "../" if the root lies elsewhere.
std::string prefixOf(const std::string& root) {
  const std::string path = std::filesystem::path(root).lexically_normal().string();
  if (path == "." || path == "./") return {};
  return path.ends_with('/') ? path : path + "/";
}

}  // namespace

TrackedFiles::TrackedFiles(const Project& project)
    : root_(prefixOf(project.manifest.files.root.value)) {
  // Another repository may be responsible for a root elsewhere.
  if (!root_.starts_with("../") && !root_.starts_with('/')) {
    tracked_ = addon::project::trackedFiles(project.folder);
  }
  for (const auto& file : project.manifest.files.added) added_.insert(file.to.value);
}

bool TrackedFiles::lacks(const std::string& path) const {
  if (tracked_.empty() || added_.contains(path)) return false;
  // A link to a folder is tracked, not what lies behind it.
  for (std::string part = root_ + path;; part.erase(part.rfind('/'))) {
    if (tracked_.contains(part)) return false;
    if (part.find('/') == part.npos) return true;
  }
}

}  // namespace addon::build
