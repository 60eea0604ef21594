// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

#include "opc/ByteBuffer.h"
#include "opc/Streams.h"
#include "opc/zippackage/Codec.h"
#include "opc/zippackage/PackageFile.h"
#include "opc/zippackage/ZipDirectory.h"

namespace opc::zippackage::detail {

/// A large item, read piece by piece from its data's place in the file.
class ZipItemStream final : public InputStream {
 public:
  ZipItemStream(const PackageFile& file, const ZipEntry& entry, std::uint64_t dataOffset);

  std::size_t read(unsigned char* buffer, std::size_t size) override;
  bool isEnd() override { return left_ == 0; }

  /// Throws unless the packed data is at its end and the checksum is correct. read() calls this
  /// with the last byte. The caller that opens an empty item must call it.
  void checkEnd();

 private:
  std::size_t unpack(unsigned char* buffer, std::size_t size);
  std::size_t readStored(unsigned char* buffer, std::size_t size);
  bool refill();

  const PackageFile& file_;
  const std::uint16_t method_;
  const std::uint32_t expectedCrc_;
  std::uint64_t left_;        ///< of the unpacked data
  std::uint64_t next_;        ///< offset of packed data not read yet
  std::uint64_t packedLeft_;  ///< of those
  std::uint32_t crc_ = 0;
  ByteBuffer block_;
  Bytes packed_;  ///< read and not unpacked yet
  StreamInflater inflater_;
};

}  // namespace opc::zippackage::detail
