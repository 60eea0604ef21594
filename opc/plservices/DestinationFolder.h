// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "opc/FileDescriptor.h"

namespace opc::plservices {

/// The folder on disk that files are written to, open. The path to it may go through links.
class DestinationFolder {
 public:
  /// Makes the folder if it is missing; the one above it must exist. Throws Exception that names
  /// it.
  explicit DestinationFolder(std::string path);

  int descriptor() const { return folder_.get(); }
  /// Whether nothing was in it.
  bool isFresh() const { return fresh_; }
  /// Takes the folder away again, if it was made here and nothing has been put into it.
  void undo() noexcept;

 private:
  void open();

  std::string path_;
  FileDescriptor folder_;
  bool made_ = false;
  bool fresh_ = false;
};

}  // namespace opc::plservices
