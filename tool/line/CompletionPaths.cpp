// SPDX-License-Identifier: MIT
#include "tool/line/CompletionPaths.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <new>
#include <system_error>

#include "addon/packaging/AddonPackage.h"
#include "opc/Text.h"
#include "text/Lines.h"

namespace tool::line {

namespace {

namespace fs = std::filesystem;

constexpr std::array<std::string_view, 3> kPackageNames{"PACKAGE", "A", "B"};

/// The word up to and including its last '/'.
std::string_view folderOf(std::string_view word) {
  const std::size_t slash = word.rfind('/');
  return slash == std::string_view::npos ? std::string_view() : word.substr(0, slash + 1);
}

struct DiskEntry {
  std::string name;
  bool isFolder;
};

std::vector<DiskEntry> entriesOf(const std::string& folder) {
  std::vector<DiskEntry> entries;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    std::error_code unknown;
    entries.push_back({entry->path().filename().string(), entry->is_directory(unknown)});
  }
  return entries;
}

bool isWanted(const DiskEntry& entry, DiskPath kind, bool hasPackages) {
  if (entry.isFolder || kind == DiskPath::AnyFile) return true;
  if (kind == DiskPath::Folder) return false;
  return !hasPackages || entry.name.ends_with(addon::packaging::kPackageExtension);
}

}  // namespace

std::optional<DiskPath> diskPathKind(std::string_view valueName) {
  constexpr std::array<std::string_view, 5> kFiles{"FILE", "IMAGE", "ARG", "VALUE", "FILE.json"};
  constexpr std::array<std::string_view, 3> kFolders{"FOLDER", "DIR", "SITE"};
  if (isPackageName(valueName)) return DiskPath::Package;
  if (std::find(kFiles.begin(), kFiles.end(), valueName) != kFiles.end()) return DiskPath::AnyFile;
  if (std::find(kFolders.begin(), kFolders.end(), valueName) != kFolders.end()) {
    return DiskPath::Folder;
  }
  return std::nullopt;
}

bool isPackageName(std::string_view valueName) {
  return std::find(kPackageNames.begin(), kPackageNames.end(), valueName) != kPackageNames.end();
}

bool isPackagePathName(std::string_view valueName) {
  return valueName == "PATH" || valueName == "FROM" || valueName == "TO";
}

std::string withHome(std::string_view path) {
  const char* home = std::getenv("HOME");
  if (home == nullptr || (path != "~" && !path.starts_with("~/"))) return std::string(path);
  return std::string(home) + std::string(path.substr(1));
}

std::vector<std::string> pathsOnDisk(const std::string& word, DiskPath kind) {
  const std::string_view folder = folderOf(word);
  const bool wantsHidden = std::string_view(word).substr(folder.size()).starts_with('.');
  std::vector<DiskEntry> entries = entriesOf(folder.empty() ? "." : withHome(folder));
  // If no file is named like a package, any file may be one: 'verify' reads them all.
  const bool hasPackages = std::any_of(entries.begin(), entries.end(), [](const DiskEntry& entry) {
    return !entry.isFolder && entry.name.ends_with(addon::packaging::kPackageExtension);
  });
  std::vector<std::string> paths;
  for (const DiskEntry& entry : entries) {
    if (entry.name.starts_with('.') && !wantsHidden) continue;
    if (!isWanted(entry, kind, hasPackages)) continue;
    paths.push_back(std::string(folder) + entry.name + (entry.isFolder ? "/" : ""));
  }
  std::sort(paths.begin(), paths.end());
  return paths;
}

namespace {

/// A folder in place of a package has the files of the package.
std::vector<std::string> pathsInFolder(const std::string& folder, const std::string& word) {
  std::vector<std::string> paths = pathsOnDisk(folder + word, DiskPath::AnyFile);
  for (std::string& path : paths) path.erase(0, folder.size());
  return paths;
}

}  // namespace

std::vector<std::string> pathsInPackage(const std::string& package, const std::string& word) {
  if (package.empty()) return {};
  std::error_code unknown;
  if (fs::is_directory(withHome(package), unknown)) return pathsInFolder(package + "/", word);
  std::vector<std::string> paths;
  try {
    addon::packaging::AddonPackage opened(opc::fromUtf8(withHome(package)));
    opened.logicalPackage().open(opc::interfaces::OpenMode::Read);
    auto& tree = opened.fileSystem();
    const std::string_view folder = folderOf(word);
    const std::string_view path = text::trimSlashes(folder);
    const auto found = path.empty() ? nullptr : tree.find(path);
    if (!path.empty() && (!found || found->isFile())) return paths;
    for (const auto& child : tree.getChildren(found ? *found : tree.getRoot())) {
      const std::string whole = child.path();
      const std::string leaf = whole.substr(whole.rfind('/') + 1);
      paths.push_back(std::string(folder) + leaf + (child.isFile() ? "" : "/"));
    }
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception&) {
    // The command itself will report the error.
    paths.clear();
  }
  return paths;
}

}  // namespace tool::line
