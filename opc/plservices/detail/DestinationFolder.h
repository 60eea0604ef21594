// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "opc/FileDescriptor.h"

namespace opc::plservices::detail {

/// The folder on disk that files are written to, open. The path to it may go through links.
class DestinationFolder {
 public:
  /// Makes the folder if it is missing, and those above it. Throws Exception that names the one
  /// that cannot be made or opened; nothing that was made stays then.
  explicit DestinationFolder(std::string path);

  int descriptor() const { return folder_.get(); }
  /// Whether nothing was in it.
  bool isFresh() const { return fresh_; }
  /// Takes away again what was made here, unless something has been put into it.
  void undo() noexcept;

 private:
  void make();
  bool makeOne(const std::string& path);
  void open();

  std::string path_;
  FileDescriptor folder_;
  std::vector<std::string> made_;  // outermost first
  bool fresh_ = false;
};

}  // namespace opc::plservices::detail
