// SPDX-License-Identifier: MIT
#include "addon/build/SourceFiles.h"

#include <fmt/format.h>

#include <cerrno>
#include <utility>

#include "addon/build/BuildError.h"
#include "addon/build/detail/ReadFile.h"
#include "opc/Text.h"
#include "opc/interfaces/MemoryContentSource.h"

namespace addon::build {

using addon::packaging::AddonPackage;
using addon::project::PatternList;
using opc::plservices::FileContentSource;
using opc::plservices::FileSystemEntryAlreadyExists;

namespace {

constexpr std::string_view kIgnoreFile = ".kraddonignore";
constexpr std::size_t kMaxIgnoreFileSize = std::size_t{16} << 20;

bool isFolderOf(AddonPackage& package, const std::string& path) {
  const auto entry = package.fileSystem().find(path);
  return entry != nullptr && !entry->isFile();
}

BuildError isTaken(const std::string& path, AddonPackage& package) {
  if (isFolderOf(package, path)) {
    return BuildError(opc::sentence("cannot add", path, "the package has a folder with that name"),
                      {}, EEXIST);
  }
  return BuildError(opc::sentence("cannot add", path, "the package has a file with that name"),
                    "--replace replaces it", EEXIST);
}

std::unique_ptr<FileContentSource> contentOf(const SourceFile& file) {
  return file.facts ? std::make_unique<FileContentSource>(file.diskPath, *file.facts)
                    : std::make_unique<FileContentSource>(file.diskPath);
}

/// `content` is a file of the disk, or any content and what describes it.
template <typename... Content>
void store(const std::string& path, bool replaces, AddonPackage& package, Content... content) {
  auto& tree = package.fileSystem();
  const auto old = replaces ? tree.find(path) : nullptr;
  if (old != nullptr && old->isFile()) return tree.replaceFile(*old, std::move(content)...);
  try {
    tree.addFile(std::move(content)..., path);
  } catch (const FileSystemEntryAlreadyExists&) {
    throw isTaken(path, package);
  }
}

}  // namespace

void addIgnoreFile(const std::string& folder, const std::string& place, PatternList& patterns) {
  const std::string file = onDisk(folder, std::string(kIgnoreFile));
  if (opc::identityOf(file))
    patterns.addLines(detail::readWholeFile(file, kMaxIgnoreFileSize), place);
}

std::string joinPath(std::string_view folder, std::string_view name) {
  if (folder.empty() || name.empty()) return std::string(folder.empty() ? name : folder);
  return fmt::format("{}/{}", folder, name);
}

bool storeFolder(const std::string& path, AddonPackage& package) {
  try {
    package.fileSystem().createFolder(opc::fromUtf8(path));
    return true;
  } catch (const FileSystemEntryAlreadyExists&) {
    if (isFolderOf(package, path)) return false;
    throw BuildError(
        opc::sentence("cannot create the folder", path, "the package has a file with that name"),
        {}, EEXIST);
  }
}

PatternList patternsOf(const SourceChoice& choice, const std::string& folder,
                       const std::string& place) {
  PatternList patterns;
  if (choice.leavesOutUsual) addon::project::addDefaultExcludes(patterns);
  if (!folder.empty()) addIgnoreFile(folder, place, patterns);
  for (const std::string& glob : choice.excludes) patterns.add(glob);
  return patterns;
}

std::vector<SourceFile> sourcesBelow(const std::string& folder, const std::string& place,
                                     const SourceChoice& choice) {
  TreeWalkOptions options;
  options.excludes = patternsOf(choice, folder, place);
  options.place = place;
  options.followsOutside = choice.followsOutside;
  options.leftOut = withFolders({choice.package});
  if (choice.onLeftOut) {
    options.onExcluded = [&choice](const std::string& path, bool) { choice.onLeftOut(path); };
  }
  options.onLeftOut = options.onExcluded;
  options.stop = choice.stop;
  std::vector<SourceFile> sources;
  for (WalkedEntry& entry : walkTree(folder, options)) {
    std::string diskPath = onDisk(folder, entry.path);
    sources.push_back(
        {std::move(diskPath), joinPath(place, entry.path), entry.isFolder, entry.facts});
  }
  return sources;
}

void storeFiles(const std::vector<SourceFile>& files, bool replaces, AddonPackage& package,
                const opc::interfaces::StopFunction& stop) {
  for (const SourceFile& file : files) {
    if (stop) stop();
    if (file.isFolder) {
      storeFolder(file.path, package);
    } else {
      storeContent(contentOf(file), file.path, replaces, package);
    }
  }
}

void storeContent(std::unique_ptr<FileContentSource> content, const std::string& path,
                  bool replaces, AddonPackage& package) {
  store(path, replaces, package, std::move(content));
}

void storeContent(std::string content, const std::string& path, bool replaces,
                  AddonPackage& package) {
  const opc::model::StandardPartInfo info(opc::interfaces::CompressionType::Normal, content.size());
  std::unique_ptr<opc::interfaces::IContentSource> source =
      std::make_unique<opc::interfaces::MemoryContentSource>(std::move(content), "'" + path + "'");
  store(path, replaces, package, std::move(source), info);
}

std::vector<std::string> pathsOf(const std::vector<SourceFile>& files) {
  std::vector<std::string> paths;
  paths.reserve(files.size());
  for (const SourceFile& file : files) {
    paths.push_back(file.isFolder ? file.path + "/" : file.path);
  }
  return paths;
}

}  // namespace addon::build
