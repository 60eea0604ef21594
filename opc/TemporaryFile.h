// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

#include "opc/FileDescriptor.h"

namespace opc {

/// A random name for a file in the making that is to become `name`: ".NAME.XXXXXX.tmp" in at most
/// 255 bytes, cut at a character.
std::string temporaryName(std::string_view name);
/// The same with these six letters or digits instead of random ones.
std::string temporaryName(std::string_view name, std::string_view letters);

/// Whether temporaryName makes such names. A killed program may leave files of these names behind.
bool isTemporaryName(std::string_view name) noexcept;
/// Its random letters; empty if temporaryName does not make such names.
std::string_view lettersOfTemporaryName(std::string_view name) noexcept;

/// A file in the making, which gets its name when it is complete. Until then it has none, so that
/// nothing is left of it even if the process is killed. Where the file system cannot do that, or
/// /proc is missing, it has a temporary name and is locked (flock).
///
/// Functions that return false have set errno.
class TemporaryFile {
 public:
  TemporaryFile() = default;
  /// Removes the file unless it was put in place.
  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  /// Creates the file that is to appear at `path`, which is relative to the open `folder` unless it
  /// is absolute. The folder must stay open.
  bool create(int folder, std::string path, mode_t mode);

  /// Open for reading and writing.
  int descriptor() const { return file_.get(); }
  /// The temporary name, relative as the path was; empty if it has none.
  const std::string& name() const { return name_; }
  /// A path at which it can be opened, for a file that has no name.
  std::string pathOfNameless() const;

  /// Reports what closing would: a full disk that writing did not report.
  bool finishWriting();
  /// Gives it its name in one step. Without `replaces`, fails with EEXIST if the name is taken.
  bool putInPlace(bool replaces);

 private:
  bool createNamed(mode_t mode);
  bool linkTo(const std::string& path) const;
  bool linkBeside();
  bool copyToNamed();
  bool rename(unsigned flags) const;
  bool linkWithoutReplacing();
  bool claimWithoutReplacing();
  bool isInPlace(const std::string& path) const;

  int folder_ = -1;
  std::string path_;
  std::string name_;
  FileDescriptor file_;
};

/// A file in `folder` that has no name and disappears with its last descriptor. Returns none, with
/// errno set, on failure.
FileDescriptor createNamelessFile(const std::string& folder);

/// Removes what killed processes left of files that were to appear at `path` (as for
/// TemporaryFile): temporary names that are older than a day and not locked. Ignores failures.
void removeAbandonedFiles(int folder, const std::string& path);

}  // namespace opc
