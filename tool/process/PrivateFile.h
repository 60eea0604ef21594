// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace tool::process {

/// A path for a file that is needed for a while: in a new folder in TMPDIR, or else /tmp, that is
/// closed to everybody else. Both go away again, even when work is interrupted: from here on
/// signals are only noted (Interrupt::defer).
class PrivateFile {
 public:
  /// Makes the folder, not the file. Throws Failure when there can be none.
  explicit PrivateFile(const std::string& name);
  ~PrivateFile();
  PrivateFile(const PrivateFile&) = delete;
  PrivateFile& operator=(const PrivateFile&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::string folder_;
  std::string path_;
};

}  // namespace tool::process
