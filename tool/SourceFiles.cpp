// SPDX-License-Identifier: MIT
#include "tool/SourceFiles.h"

#include <fmt/format.h>

#include <memory>
#include <utility>

#include "opc/Text.h"
#include "opc/plservices/FileContentSource.h"
#include "tool/process/Errors.h"
#include "tool/process/Interrupt.h"
#include "tool/process/ReadFile.h"
#include "tool/report/Messages.h"

namespace tool {

using addon::packaging::AddonPackage;
using addon::project::PatternList;
using opc::plservices::FileContentSource;
using opc::plservices::FileSystemEntryAlreadyExists;

namespace {

constexpr std::string_view kIgnoreFile = ".kraddonignore";
constexpr std::size_t kLargestIgnoreFile = std::size_t{16} << 20;

bool isFolderOf(AddonPackage& package, const std::string& path) {
  const auto entry = package.fileSystem().find(path);
  return entry != nullptr && !entry->isFile();
}

process::Failure isTaken(const std::string& path, AddonPackage& package) {
  if (isFolderOf(package, path)) {
    return process::Failure(
        process::sentence("cannot add", path, "the package has a folder with that name"));
  }
  return process::Failure(
      process::sentence("cannot add", path, "the package has a file with that name"),
      "--replace replaces it");
}

void storeFile(const SourceFile& file, bool replaces, AddonPackage& package) {
  auto content = std::make_unique<FileContentSource>(file.diskPath);
  auto& tree = package.fileSystem();
  const auto old = replaces ? tree.find(file.path) : nullptr;
  if (old != nullptr && old->isFile()) return tree.replaceFile(*old, std::move(content));
  try {
    tree.addFile(std::move(content), file.path);
  } catch (const FileSystemEntryAlreadyExists&) {
    throw isTaken(file.path, package);
  }
}

}  // namespace

SourceFinder::SourceFinder(const line::Invocation& invocation)
    : invocation_(invocation),
      patterns_(patternsFor({}, {})),
      package_(opc::identityOf(invocation.operands()[0])) {}

PatternList SourceFinder::patternsFor(const std::string& folder, const std::string& place) const {
  PatternList patterns;
  if (invocation_.has("default-excludes")) addon::project::addDefaultExcludes(patterns);
  if (!folder.empty()) addIgnoreFile(folder, place, patterns);
  for (const std::string& glob : invocation_.values("exclude")) patterns.add(glob);
  return patterns;
}

void SourceFinder::report(const std::string& path) const {
  if (!invocation_.settings().isVerbose) return;
  report::printToStandardError(fmt::format("left out: {}\n", opc::printable(path)));
}

bool SourceFinder::leavesOut(const std::string& path, bool isFolder) const {
  if (!patterns_.excludes(path, isFolder)) return false;
  report(path);
  return true;
}

bool SourceFinder::isPackage(const std::string& diskPath) const {
  return package_ && opc::identityOf(diskPath) == package_;
}

void SourceFinder::collect(const std::string& folder, const std::string& place,
                           std::vector<SourceFile>& into) const {
  TreeWalkOptions options;
  options.excludes = patternsFor(folder, place);
  options.place = place;
  options.followsOutside = invocation_.has("follow");
  options.leftOut = withFolders({invocation_.operands()[0]});
  options.onExcluded = [this](const std::string& path, bool) { report(path); };
  options.onLeftOut = options.onExcluded;
  for (WalkedEntry& entry : walkTree(folder, options)) {
    std::string diskPath = onDisk(folder, entry.path);
    into.push_back({std::move(diskPath), joinPath(place, entry.path), entry.isFolder});
  }
}

void addIgnoreFile(const std::string& folder, const std::string& place, PatternList& patterns) {
  const std::string file = onDisk(folder, std::string(kIgnoreFile));
  if (opc::identityOf(file))
    patterns.addLines(process::readWholeFile(file, kLargestIgnoreFile), place);
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
    throw process::Failure(process::sentence("cannot create the folder", path,
                                             "the package has a file with that name"));
  }
}

void storeFiles(const std::vector<SourceFile>& files, bool replaces, AddonPackage& package) {
  for (const SourceFile& file : files) {
    process::Interrupt::check();
    if (file.isFolder) {
      storeFolder(file.path, package);
    } else {
      storeFile(file, replaces, package);
    }
  }
}

}  // namespace tool
