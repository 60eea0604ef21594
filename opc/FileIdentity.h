// SPDX-License-Identifier: MIT
#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>

namespace opc {

/// Identifies a file on disk, whatever its path.
struct FileIdentity {
  dev_t device = 0;
  ino_t inode = 0;

  FileIdentity() = default;
  explicit FileIdentity(const struct stat& status) : device(status.st_dev), inode(status.st_ino) {}

  bool operator==(const FileIdentity&) const = default;
};

/// Of the file at `path`, links followed; nothing when there is none.
inline std::optional<FileIdentity> identityOf(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return std::nullopt;
  return FileIdentity(status);
}

}  // namespace opc
