// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace test::conformance {

/// The bytes of a package with a tree of files, each with its path as its content, and folders.
std::string packedTree(const std::vector<std::string>& files,
                       const std::vector<std::string>& folders);
/// The paths of the tree in a package, sorted by bytes; those of empty folders end in a slash.
std::vector<std::string> treeOf(const std::string& bytes);
/// What extracting all of it leaves in a new folder, as treeOf shows it. Throws what it throws.
std::vector<std::string> extractedTree(const std::string& bytes);

/// The text of what extracting into `destination` ends in; "" when nothing is at fault.
std::string extractionFault(const std::string& bytes, const std::filesystem::path& destination);
/// What a package says of its files that have no path.
std::vector<std::string> unreadableIn(const std::string& bytes);

inline std::vector<std::string> sorted(std::vector<std::string> paths) {
  std::sort(paths.begin(), paths.end());
  return paths;
}

}  // namespace test::conformance
