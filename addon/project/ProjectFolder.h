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

/// The files of a project folder, to guess from. Files that cannot be read are not errors.
///
/// Files that are excluded by default or by the folder's .kraddonignore are left out, and so are
/// links except those to files in the folder.
class ProjectFolder {
 public:
  /// Throws opc::SystemError if it is not a folder or cannot be read.
  explicit ProjectFolder(const std::string& path);

  /// Absolute, with links resolved.
  const std::string& path() const { return path_; }

  /// The paths of the files that a manifest can name, in the order of the file tree.
  const std::vector<std::string>& files() const { return files_; }

  /// Descriptions of what could not be read or cannot be named; the first few.
  const std::vector<std::string>& remarks() const { return remarks_; }

  /// The content of a file, or nothing if it cannot be read or is larger than `most` bytes.
  std::optional<std::string> read(const std::string& path, std::size_t most) const;

  /// The first bytes of a file, `size` or all that there are, or nothing if it cannot be read.
  std::optional<std::string> readStart(const std::string& path, std::size_t size) const;

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
