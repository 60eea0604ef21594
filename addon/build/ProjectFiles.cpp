// SPDX-License-Identifier: MIT
#include "addon/build/ProjectFiles.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <system_error>

#include "addon/build/PatternChoice.h"
#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/plservices/FileContentSource.h"

namespace addon::build {

using addon::packaging::AddonPackage;
using addon::project::AddedFileSection;
using addon::project::FilesSection;
using addon::project::Pattern;
using addon::project::PatternList;
using addon::project::Text;
using opc::plservices::FileContentSource;

namespace {

PatternList excludesOf(const Project& project, const FileChoice& choice) {
  const FilesSection& files = project.manifest.files;
  PatternList patterns;
  if (files.defaultExcludes.value) addon::project::addDefaultExcludes(patterns);
  addIgnoreFile(project.folder, {}, patterns);
  for (const Text& pattern : files.exclude.value) patterns.add(pattern.value);
  for (const std::string& pattern : choice.excludes) patterns.add(pattern);
  return patterns;
}

PatternChoice inclusionOf(const FilesSection& files) {
  std::vector<std::string> patterns;
  for (const Text& pattern : files.include.value) patterns.push_back(pattern.value);
  return PatternChoice(patterns);
}

/// A pattern that matches nothing is probably misspelled, and what it means would be missing.
void requireUsed(const FilesSection& files, const PatternChoice& inclusion) {
  const std::string* unused = inclusion.unused();
  if (unused == nullptr) return;
  const auto& patterns = files.include.value;
  const auto found = std::find_if(patterns.begin(), patterns.end(),
                                  [&](const Text& one) { return one.value == *unused; });
  throw ManifestError(
      found == patterns.end() ? files.include.position : found->position,
      fmt::format("files.include: the pattern '{}' matches nothing, or only what is excluded",
                  *unused));
}

std::string rootOf(const Project& project) {
  const Text& root = project.manifest.files.root;
  std::string path = project.onDisk(root.value);
  std::error_code error;
  if (!root.isGiven() || std::filesystem::is_directory(path, error)) return path;
  const std::string why = error ? error.message() : std::generic_category().message(ENOTDIR);
  throw ManifestError(root.position,
                      fmt::format("files.root: cannot read the folder '{}': {}", path, why));
}

/// Tells why a path is left out by its excludes.
std::string reasonOf(const PatternList& excludes, const std::string& path, bool isFolder) {
  const Pattern* pattern = excludes.deciding(path, isFolder);
  return pattern == nullptr ? "a file of an interrupted command"
                            : fmt::format("pattern '{}'", pattern->text());
}

/// A mistake in the manifest when it is one of a file that it names.
[[noreturn]] void blame(const Text& text, std::string_view key, std::string_view why) {
  throw ManifestError(text.position, fmt::format("{}: {}", key, why));
}

void storeAddedFile(const Project& project, const AddedFileSection& file, const std::string& key,
                    AddonPackage& package) {
  std::unique_ptr<FileContentSource> content;
  try {
    content = std::make_unique<FileContentSource>(project.onDisk(file.from.value));
  } catch (const opc::Exception& error) {
    blame(file.from, key + ".from", error.what());
  }
  try {
    package.fileSystem().addFile(std::move(content), file.to.value);
  } catch (const opc::Exception& error) {
    blame(file.to, key + ".to", error.what());
  }
}

}  // namespace

std::vector<SourceFile> treeOf(const Project& project, const FileChoice& choice) {
  const FilesSection& files = project.manifest.files;
  const std::string root = rootOf(project);
  PatternChoice inclusion = inclusionOf(files);
  TreeWalkOptions options;
  options.excludes = excludesOf(project, choice);
  options.followsOutside = choice.followsOutside;
  options.project = project.folder;
  options.leftOut = withFolders(choice.leftOut);
  options.stop = choice.stop;
  const auto report = [&](const std::string& path, const std::string& why) {
    if (choice.onLeftOut) choice.onLeftOut(path, why);
  };
  options.onExcluded = [&](const std::string& path, bool isFolder) {
    report(path, reasonOf(options.excludes, path, isFolder));
  };
  options.onLeftOut = [&](const std::string& path, bool isFolder) {
    report(path, isFolder ? "where the package goes" : "the package itself");
  };
  options.includes = [&](const std::string& path, bool isFolder) {
    if (isFolder && !files.emptyFolders.value) return report(path, "an empty folder"), false;
    if (!files.include.isGiven() || inclusion.chooses(path, isFolder)) return true;
    return report(path, "not in files.include"), false;
  };
  std::vector<SourceFile> found;
  for (WalkedEntry& entry : walkTree(root, options)) {
    std::string diskPath = onDisk(root, entry.path);
    found.push_back({std::move(diskPath), std::move(entry.path), entry.isFolder, entry.facts});
  }
  if (files.include.isGiven()) requireUsed(files, inclusion);
  return found;
}

void storeAddedFiles(const Project& project, const opc::interfaces::StopFunction& stop,
                     AddonPackage& package) {
  const auto& added = project.manifest.files.added;
  for (std::size_t i = 0; i < added.size(); ++i) {
    if (stop) stop();
    storeAddedFile(project, added[i], fmt::format("files.add[{}]", i), package);
  }
}

}  // namespace addon::build
