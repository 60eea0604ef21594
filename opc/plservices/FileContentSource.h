// SPDX-License-Identifier: MIT
#pragma once

#include <sys/stat.h>

#include <string>

#include "opc/interfaces/IContentSource.h"

namespace opc::plservices {

/// A file on disk as the content of a part.
class FileContentSource final : public interfaces::IContentSource {
 public:
  /// Opens and closes the file to see that it can be read. Throws SystemError when it cannot, and
  /// ErrorCode::InvalidArgument when it is not a regular file. Links are followed.
  explicit FileContentSource(const std::u16string& path);
  /// The same with a path in UTF-8.
  explicit FileContentSource(std::string path);

  std::unique_ptr<InputStream> getInputStream() override;
  std::uint64_t size() const override { return size_; }
  std::string description() const override { return path_; }

  std::int64_t modified() const { return modified_; }  ///< seconds since 1970, UTC
  bool executable() const { return executable_; }      ///< by its owner

 private:
  std::string path_;
  std::uint64_t size_ = 0;
  std::int64_t modified_ = 0;
  bool executable_ = false;
};

}  // namespace opc::plservices
