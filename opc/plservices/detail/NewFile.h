// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

#include "opc/FileDescriptor.h"
#include "opc/TemporaryFile.h"

namespace opc::plservices::detail {

/// A file on disk in the making: removed again unless it is finished.
class NewFile {
 public:
  struct Properties {
    bool executable = false;
    bool replaces = false;  ///< a file or link of that name, when it is finished
    bool isLarge = false;   ///< it gets its name when it is finished
  };

  /// Creates `name` in the open folder. `name` must outlive this. Throws Exception when something
  /// else is there.
  NewFile(int folder, const char* name, const Properties& properties);
  ~NewFile();
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  void write(const unsigned char* bytes, std::size_t size);
  /// Sets the time of the last change (seconds since 1970, UTC), and puts the file in its place.
  void finish(std::int64_t modified);

 private:
  int descriptor() const { return named_ ? named_.get() : temporary_.descriptor(); }
  void closeNamed();
  void takePlace();

  int folder_;
  const char* name_;
  bool replaces_;
  FileDescriptor named_;     ///< has its name from the beginning
  TemporaryFile temporary_;  ///< used if that is none
};

}  // namespace opc::plservices::detail
