// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "addon/project/Patterns.h"
#include "opc/FileDescriptor.h"

namespace addon::project {

/// What lies in an author's folder, for whoever guesses from it: nothing in it is a reason to fail.
///
/// Files that are left out by default, or by the folder's .kraddonignore, do not count; nor do
/// links, but for those to files of the folder.
class ProjectFolder {
 public:
  /// Throws opc::SystemError for what is no folder, or cannot be read.
  explicit ProjectFolder(const std::string& path);

  /// Absolute, without links.
  const std::string& path() const { return path_; }

  /// Paths of the files below it that a manifest can name, in the order of the file tree.
  const std::vector<std::string>& files() const { return files_; }

  /// What could not be looked at, or cannot be named, each in words for people; the first few.
  const std::vector<std::string>& remarks() const { return remarks_; }

  /// A file's content; nothing when it cannot be read, or holds more than `most` bytes.
  std::optional<std::string> read(const std::string& path, std::size_t most) const;

 private:
  void walk();
  void readFolder(const std::string& path, std::vector<std::string>& pending);
  void addEntry(const std::string& folder, std::string_view name, unsigned char type,
                std::vector<std::string>& pending);
  bool isFileInside(const std::string& path) const;
  void remark(std::string_view path, std::string_view why);

  std::string path_;
  opc::FileDescriptor root_;
  PatternList excludes_;
  std::vector<std::string> files_;
  std::vector<std::string> remarks_;
};

}  // namespace addon::project
