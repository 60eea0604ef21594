// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tool::line {

/// Which files to suggest. Folders are always suggested, since they lead to files.
enum class DiskPath { AnyFile, Folder, Package };

/// What a value with that name is on the disk, or nothing if it is not a path on the disk.
std::optional<DiskPath> diskPathKind(std::string_view valueName);

/// Whether a value with that name is a package, or a path in a package.
bool isPackageName(std::string_view valueName);
bool isPackagePathName(std::string_view valueName);

/// The entries of the folder that `word` names up to its last '/'; folders end with '/'. A leading
/// "~/" is the home folder. Hidden files are included only if the name begins with a dot.
std::vector<std::string> pathsOnDisk(const std::string& word, DiskPath kind);

/// The same for the tree of a package.
std::vector<std::string> pathsInPackage(const std::string& package, const std::string& word);

/// "/home/weaver/x" of "~/x".
std::string withHome(std::string_view path);

}  // namespace tool::line
