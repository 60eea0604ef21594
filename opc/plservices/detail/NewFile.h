// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "opc/FileDescriptor.h"

namespace opc::plservices::detail {

/// A file on disk in the making: removed again unless it is finished.
class NewFile {
 public:
  /// Creates `name` in the open folder. With `replace`, when a file or link of that name is there,
  /// the new file gets a name of its own, and takes the old one's place when it is finished.
  /// `name` must outlive this. Throws Exception when something else is there.
  NewFile(int folder, const char* name, bool executable, bool replace);
  ~NewFile();
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  void write(const unsigned char* bytes, std::size_t size);
  /// Sets the time of the last change (seconds since 1970, UTC), closes the file and puts it in
  /// its place.
  void finish(std::int64_t modified);

 private:
  void createBeside(mode_t mode);
  void takePlace();
  const char* currentName() const { return temporary_.empty() ? name_ : temporary_.c_str(); }

  int folder_;
  const char* name_;
  std::string temporary_;  ///< its name until it takes the place of another
  FileDescriptor file_;
  bool finished_ = false;
};

}  // namespace opc::plservices::detail
