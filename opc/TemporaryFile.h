// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

#include "opc/FileDescriptor.h"

namespace opc {

/// Returns a random temporary name, ".NAME.XXXXXX.tmp", for a file that will be renamed to `name`.
/// It has at most 255 bytes, the usual limit of file systems; a longer NAME is cut between two
/// characters.
std::string temporaryName(std::string_view name);
/// The same with these six letters or digits instead of random ones.
std::string temporaryName(std::string_view name, std::string_view letters);

/// Whether the name has the form that temporaryName() returns. A killed program may leave files
/// with such names.
bool isTemporaryName(std::string_view name) noexcept;
/// The random letters of a temporary name; empty if the name does not have that form.
std::string_view lettersOfTemporaryName(std::string_view name) noexcept;

/// A file that gets its name when it is complete. Until then it has no name (O_TMPFILE), so that
/// nothing is left of it if the process is killed. If the file system does not support this, or
/// /proc is missing, the file has a temporary name and is locked with flock().
///
/// Functions that return false set errno.
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
  /// The path with the temporary name, relative as the path given to create(); empty if the file
  /// has no name.
  const std::string& name() const { return name_; }
  /// A path at which a file without a name can be opened.
  std::string pathOfNameless() const;

  /// Returns false for errors that closing the file would report, such as a full disk that writing
  /// did not report.
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

/// Creates a file in `folder` that has no name and disappears when its last descriptor is closed.
/// On failure, returns an empty descriptor and sets errno.
FileDescriptor createNamelessFile(const std::string& folder);

/// Removes temporary files for `path` that killed processes have left: those that are older than a
/// day and not locked. `path` is relative to `folder` unless it is absolute. Ignores failures.
void removeAbandonedFiles(int folder, const std::string& path);

}  // namespace opc
