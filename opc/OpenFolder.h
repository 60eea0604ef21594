// SPDX-License-Identifier: MIT
#pragma once

#include <dirent.h>
#include <fcntl.h>

#include <cerrno>
#include <memory>
#include <string>
#include <string_view>

#include "opc/FileDescriptor.h"
#include "opc/SystemCall.h"

namespace opc {

/// A folder of the disk that is open for reading its entries.
class OpenFolder {
 public:
  /// Opens a folder whose path is relative to `base`, a descriptor or AT_FDCWD; an empty path is
  /// `base` itself. `flags` are added to those of openat(). If it fails, the object is false, and
  /// errno says why.
  OpenFolder(int base, const std::string& path, int flags = 0) {
    FileDescriptor file(uninterrupted([&] {
      return ::openat(base, path.empty() ? "." : path.c_str(),
                      O_RDONLY | O_DIRECTORY | O_CLOEXEC | flags);
    }));
    if (file) listing_.reset(::fdopendir(file.get()));
    if (listing_) file.release();
  }

  explicit operator bool() const noexcept { return listing_ != nullptr; }
  int descriptor() const noexcept { return ::dirfd(listing_.get()); }

  /// The next entry, without "." and "..", in the order of the disk; valid until the next call.
  /// Null after the last one, with errno 0, and if reading fails, with the reason in errno.
  const dirent* next() noexcept {
    while (true) {
      errno = 0;
      const dirent* entry = ::readdir(listing_.get());
      if (entry == nullptr) return nullptr;
      const std::string_view name = entry->d_name;
      if (name != "." && name != "..") return entry;
    }
  }

 private:
  struct Close {
    void operator()(DIR* listing) const noexcept { ::closedir(listing); }
  };
  std::unique_ptr<DIR, Close> listing_;
};

}  // namespace opc
