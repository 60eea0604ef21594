// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "opc/ByteBuffer.h"
#include "opc/Streams.h"
#include "opc/zippackage/Codec.h"
#include "opc/zippackage/PackageFile.h"
#include "opc/zippackage/ZipDirectory.h"
#include "opc/zippackage/detail/ReadWindow.h"

namespace opc::zippackage {

/// Reads the items of a package, and checks them: the local header against the directory, then
/// the data descriptor, size and checksum. Faults throw FormatError: ZP-7 and ZP-9 for headers,
/// ZP-8 for descriptors, RB-2 for data that reach into the next item or the directory, ZP-15 for
/// data. Entries must be free of refused faults. The file and the directory must outlive the reader
/// and its streams.
class ZipItemReader {
 public:
  ZipItemReader(const PackageFile& file, const ZipDirectory& directory);

  /// Reads all of an item. Throws ErrorCode::TooLarge, before anything is allocated, when it
  /// declares more than `limit` bytes.
  void read(std::size_t entry, ByteBuffer& into, std::uint64_t limit);

  /// A stream over an item. It holds an item of up to kWholeLimit bytes in memory, and needs
  /// constant memory for a larger one. If the item is damaged, it throws before it returns the last
  /// bytes.
  std::unique_ptr<InputStream> open(std::size_t entry);

  /// At most `size` bytes of the packed data, from `offset` on; valid until the next call. Empty
  /// after the end of the data.
  Bytes packedBytes(std::size_t entry, std::uint64_t offset, std::size_t size);

  /// Where the item's bytes end in the file, data descriptor included.
  std::uint64_t endOf(std::size_t entry);

  LocalHeader localHeader(std::size_t entry);

  /// The extra fields of the item's local header, valid until the next call.
  Bytes localExtra(std::size_t entry);

 private:
  struct Place {
    std::uint64_t data = 0;
    std::uint64_t end = 0;  ///< descriptor included
  };

  Place locate(std::size_t entry, bool withData);
  LocalHeader readHeader(std::size_t entry, std::uint64_t dataSize);
  std::size_t descriptorLength(std::size_t entry, std::uint64_t from, std::uint64_t dataEnd,
                               bool wideFirst);
  [[noreturn]] void refuseOverlap(std::size_t entry) const;
  void readWhole(std::size_t entry, ByteBuffer& into);
  std::unique_ptr<InputStream> openStream(std::size_t entry);

  const PackageFile& file_;
  const ZipDirectory& directory_;
  detail::ReadWindow window_;
  WholeInflater inflater_;
};

}  // namespace opc::zippackage
