// SPDX-License-Identifier: MIT
#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "opc/FileDescriptor.h"
#include "opc/FileIdentity.h"

namespace opc::zippackage {

/// Shows whether a file is still the same one, with the same bytes.
struct FileVersion {
  FileIdentity file;
  off_t size = 0;
  std::int64_t modifiedSeconds = 0;
  std::int64_t modifiedNanoseconds = 0;

  static FileVersion of(const struct stat& status);
  bool operator==(const FileVersion&) const = default;
};

/// A package file open for reading. Nothing of it is mapped: a file that is cut while it is in use
/// must end in an error, not in a signal.
class PackageFile {
 public:
  /// Throws SystemError, and ErrorCode::FileSystem for what is not a regular file, both with the
  /// path in their text. Links are followed.
  explicit PackageFile(const std::string& path);

  int descriptor() const { return file_.get(); }
  /// As it was when the file was opened.
  std::uint64_t size() const { return static_cast<std::uint64_t>(version_.size); }
  const FileVersion& version() const { return version_; }

  /// Reads all `size` bytes at `offset`. Throws SystemError, and ErrorCode::Damaged when the file
  /// ends before.
  void readAt(std::uint64_t offset, unsigned char* into, std::size_t size) const;

 private:
  FileDescriptor file_;
  FileVersion version_;
};

}  // namespace opc::zippackage
