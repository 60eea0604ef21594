// SPDX-License-Identifier: MIT
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "fuzz/Require.h"
#include "opc/FileDescriptor.h"

namespace fuzz {

/// A file in memory that has a path, which needs /proc: without it, the test is left out.
class MemoryFile {
 public:
  MemoryFile() : file_(::memfd_create("package", MFD_CLOEXEC)) {
    if (::access("/proc/self/fd", F_OK) != 0) {
      std::puts("left out: needs /proc");
      std::exit(77);
    }
    require(static_cast<bool>(file_), "there is a file in memory");
  }

  void fill(std::string_view bytes) const {
    require(::ftruncate(file_.get(), 0) == 0, "the file can be emptied");
    for (std::size_t done = 0; done < bytes.size();) {
      const ssize_t count =
          ::pwrite(file_.get(), bytes.data() + done, bytes.size() - done, static_cast<off_t>(done));
      require(count > 0, "the file can be written");
      done += static_cast<std::size_t>(count);
    }
  }

  std::string path() const { return "/proc/self/fd/" + std::to_string(file_.get()); }

 private:
  opc::FileDescriptor file_;
};

}  // namespace fuzz
