// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tool::line {

/// Which files are worth a proposal; folders always are, as the way to them.
enum class DiskPath { AnyFile, Folder, Package };

/// What a value of that name is: of the disk, or nothing for one that is not.
std::optional<DiskPath> diskPathKind(std::string_view valueName);

/// Whether a value of that name is a package, and whether it is a path in one.
bool isPackageName(std::string_view valueName);
bool isPackagePathName(std::string_view valueName);

/// What lies in the folder that `word` names up to its last '/'; folders end in '/'. "~/" at its
/// beginning is the home folder. Hidden files only where the word asks for them.
std::vector<std::string> pathsOnDisk(const std::string& word, DiskPath kind);

/// The same in the tree of a package.
std::vector<std::string> pathsInPackage(const std::string& package, const std::string& word);

/// "/home/weaver/x" of "~/x".
std::string withHome(std::string_view path);

}  // namespace tool::line
