// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

#include "opc/FileDescriptor.h"

namespace opc::plservices {

/// A file on disk in the making: removed again unless it is finished.
class NewFile {
 public:
  /// Creates `name` in the open folder; with `replace` a file or link of that name is unlinked
  /// first. `name` must outlive this. Throws Exception when something else is there.
  NewFile(int folder, const char* name, bool executable, bool replace);
  ~NewFile();
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  void write(const unsigned char* bytes, std::size_t size);
  /// Sets the time of the last change (seconds since 1970, UTC) and closes the file.
  void finish(std::int64_t modified);

 private:
  int folder_;
  const char* name_;
  FileDescriptor file_;
  bool finished_ = false;
};

}  // namespace opc::plservices
