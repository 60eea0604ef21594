// SPDX-License-Identifier: MIT
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <string>

#include "opc/interfaces/IContentSource.h"

namespace opc::plservices {

/// What the disk says of a file.
struct FileFacts {
  std::uint64_t size = 0;
  std::int64_t modified = 0;  ///< seconds since 1970, UTC
  bool executable = false;    ///< by its owner

  FileFacts() = default;
  explicit FileFacts(const struct stat& status)
      : size(static_cast<std::uint64_t>(status.st_size)),
        modified(status.st_mtim.tv_sec),
        executable((status.st_mode & S_IXUSR) != 0) {}
};

/// A file on disk as the content of a part.
class FileContentSource final : public interfaces::IContentSource {
 public:
  /// Opens and closes the file to see that it can be read. Throws SystemError when it cannot, and
  /// ErrorCode::InvalidArgument when it is not a regular file. Links are followed.
  explicit FileContentSource(const std::u16string& path);
  /// The same with a path in UTF-8.
  explicit FileContentSource(std::string path);
  /// The same for a regular file whose facts are known. Does not open it: throws SystemError only
  /// when it must not be read.
  FileContentSource(std::string path, const FileFacts& facts);

  std::unique_ptr<InputStream> getInputStream() override;
  std::uint64_t size() const override { return facts_.size; }
  std::string description() const override { return path_; }

  std::int64_t modified() const { return facts_.modified; }
  bool executable() const { return facts_.executable; }

 private:
  std::string path_;
  FileFacts facts_;
};

}  // namespace opc::plservices
