// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

#include "opc/ByteBuffer.h"
#include "opc/zippackage/LittleEndian.h"
#include "opc/zippackage/PackageFile.h"

namespace opc::zippackage::detail {

/// A file that is being written, through one large buffer. What fails throws SystemError. The
/// destructor writes nothing: what was not flushed was not wanted.
class OutputFile {
 public:
  /// Copying calls it with the number of bytes copied so far.
  using OnCopied = std::function<void(std::uint64_t)>;

  /// File systems share stretches of files in blocks of this size.
  static constexpr std::uint64_t kBlock = 4096;

  /// `descriptor` is a file open for reading and writing, empty, which must outlive this.
  explicit OutputFile(int descriptor);

  /// How much has been written, buffered bytes included.
  std::uint64_t position() const { return flushed_ + used_; }

  void write(Bytes data);
  /// Overwrites bytes that were written before.
  void patch(std::uint64_t offset, Bytes data);
  /// Takes back everything from `offset` on.
  void rewindTo(std::uint64_t offset);
  /// Appends a stretch of another file, inside the kernel where it can. Throws ErrorCode::Damaged
  /// when that file turns out to be shorter.
  void copyFrom(const PackageFile& file, std::uint64_t offset, std::uint64_t size,
                const OnCopied& copied);
  /// Appends a stretch of what was written before.
  void repeat(std::uint64_t offset, std::uint64_t size);
  /// Hands everything to the kernel; not yet to the disk.
  void flush();

 private:
  using Read = std::function<void(std::uint64_t offset, unsigned char* into, std::size_t size)>;

  void append(int from, std::uint64_t offset, std::uint64_t size, const Read& read,
              const OnCopied& copied);
  std::uint64_t copyInKernel(int from, std::uint64_t offset, std::uint64_t size,
                             const OnCopied& copied);

  int descriptor_;
  ByteBuffer buffer_;
  std::size_t used_ = 0;
  std::uint64_t flushed_ = 0;
};

}  // namespace opc::zippackage::detail
