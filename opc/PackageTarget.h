// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace opc {

/// The location of a package file that is to be written.
struct PackageTarget {
  std::string folder;  ///< absolute, with links resolved
  std::string name;    ///< the file name in that folder; not a symbolic link
  std::string named;   ///< the path that the caller gave, made absolute

  /// Follows symbolic links at `path` to the place where the file is or would be created: a new
  /// file must replace the target of a link, not the link. Throws SystemError, for example if the
  /// folder does not exist.
  static PackageTarget resolve(const std::string& path);

  std::string path() const;

  /// Throw SystemError if the folder, or the file, is not writable. To be called early, so that no
  /// work is done for a commit that cannot succeed.
  void requireWritableFolder() const;
  void requireWritableFile() const;
};

}  // namespace opc
