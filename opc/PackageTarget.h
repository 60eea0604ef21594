// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace opc {

/// The place that a new package file goes to.
struct PackageTarget {
  std::string folder;  ///< absolute, without links
  std::string name;    ///< in that folder; no link
  std::string named;   ///< the path that was resolved, absolute

  /// Follows the links at `path` to where the file really lies, or would lie: what replaces the
  /// file must not replace the link. Throws SystemError when there is no such folder.
  static PackageTarget resolve(const std::string& path);

  std::string path() const;

  /// Throw SystemError when the folder, or the file, must not be written to. Called early, before
  /// work is done for a commit that cannot succeed.
  void requireWritableFolder() const;
  void requireWritableFile() const;
};

}  // namespace opc
