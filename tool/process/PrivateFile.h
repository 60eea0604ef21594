// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace tool::process {

/// A path for a temporary file, in a new private folder in TMPDIR or else /tmp. Both are removed at
/// the end, also after an interrupt: signals are deferred (Interrupt::defer).
class PrivateFile {
 public:
  /// Creates the folder, not the file. Throws Failure if that is not possible.
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
