// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

#include "opc/ByteBuffer.h"
#include "opc/zippackage/LittleEndian.h"
#include "opc/zippackage/PackageFile.h"

namespace opc::zippackage::detail {

/// Reads a file through a buffer that reads ahead, further and further, while it is asked for one
/// thing after another: neighbouring items cost few calls, and a single one not much more than
/// itself. The file must outlive it.
class ReadWindow {
 public:
  explicit ReadWindow(const PackageFile& file) : file_(file) {}

  /// The `size` bytes at `offset`, valid until the next call. Throws as PackageFile::readAt. The
  /// caller bounds `size`.
  Bytes at(std::uint64_t offset, std::size_t size);

 private:
  std::size_t nextReadAhead(std::uint64_t offset);

  const PackageFile& file_;
  ByteBuffer bytes_;
  std::uint64_t start_ = 0;
  std::size_t readAhead_ = 0;
};

}  // namespace opc::zippackage::detail
