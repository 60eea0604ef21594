// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "opc/ByteBuffer.h"
#include "opc/LargeBlocks.h"
#include "opc/interfaces/IPhysicalPackage.h"
#include "opc/zippackage/EndOfDirectory.h"
#include "opc/zippackage/LittleEndian.h"
#include "opc/zippackage/PackageFile.h"
#include "opc/zippackage/ZipFault.h"
#include "opc/zippackage/ZipFormat.h"

namespace opc::zippackage {

namespace detail {
class DirectoryPass;
}

/// An entry of the directory, ZIP64 values in place.
struct ZipEntry {
  static constexpr std::uint32_t kNotMapped = 0xFFFFFFFF;

  std::uint64_t headerOffset = 0;
  std::uint64_t packedSize = 0;
  std::uint64_t size = 0;
  std::uint32_t crc = 0;
  std::uint32_t record = 0;  ///< where its record begins in the directory
  std::uint32_t mappedName = kNotMapped;
  std::uint16_t nameLength = 0;  ///< in bytes, as stored
  std::uint16_t flags = 0;
  std::uint16_t method = 0;
  interfaces::ItemKind kind = interfaces::ItemKind::File;

  /// The lowest offset at which the item can end: the directory does not contain the lengths of the
  /// local header's extra fields and of a data descriptor. UINT64_MAX if the sum overflows.
  std::uint64_t leastEnd() const;
};

/// The most bytes of an item that the directory does not account for: the extra fields of its local
/// header, and a data descriptor.
inline constexpr std::uint64_t kMaxUnseen = 0xFFFF + DataDescriptor::kMaxSize;

/// The directory of a ZIP file, read at once and checked in one pass. It keeps the bytes it was
/// made of; names and records are views into them.
///
/// It allocates per directory, not per entry, and never by a number that the file merely declares.
class ZipDirectory {
 public:
  /// Reads the directory of `file`, which need not live on. What makes a directory impossible to
  /// find or to take apart throws FormatError; every other fault is only noted.
  static ZipDirectory read(const PackageFile& file);

  std::span<const ZipEntry> entries() const { return entries_; }
  /// UTF-8, or the bytes as they are when they claim to be UTF-8 and are not (a noted fault).
  std::string_view name(std::size_t entry) const {
    const std::uint32_t mapped = entries_[entry].mappedName;
    return mapped == ZipEntry::kNotMapped ? storedName(entry) : mappedName(mapped);
  }
  /// As stored.
  std::string_view storedName(std::size_t entry) const {
    const ZipEntry& here = entries_[entry];
    const unsigned char* start = bytes_.data() + here.record + CentralHeader::kSize;
    return {reinterpret_cast<const char*>(start), here.nameLength};
  }
  CentralHeader header(std::size_t entry) const;
  /// The whole record: header, name, extra fields, comment.
  Bytes record(std::size_t entry) const;
  Bytes extra(std::size_t entry) const;
  Bytes comment(std::size_t entry) const;

  /// Entries by the offset of their local headers.
  std::span<const std::uint32_t> physicalOrder() const { return physicalOrder_; }
  /// The entry with the next local header after that of `entry`; kNoEntry if the directory is next.
  std::uint32_t follower(std::size_t entry) const;
  /// The offset of that local header or of the directory.
  std::uint64_t limitOf(std::size_t entry) const;
  const DirectoryLocation& location() const { return location_; }

  /// In the order in which they were found.
  std::span<const ZipFault> faults() const { return location_.faults; }
  std::string describe(const ZipFault& fault) const;
  /// Throws FormatError for the first fault that readers refuse.
  void refuseFaults() const;

 private:
  friend class detail::DirectoryPass;
  ZipDirectory() = default;

  std::string_view mappedName(std::uint32_t mapped) const;

  ByteBuffer bytes_;
  DirectoryLocation location_;
  std::vector<ZipEntry, LargeBlockAllocator<ZipEntry>> entries_;
  std::vector<std::uint32_t, LargeBlockAllocator<std::uint32_t>> physicalOrder_;
  std::string mappedNames_;                ///< those that were not ASCII or UTF-8, end to end
  std::vector<std::size_t> mappedStarts_;  ///< and where each begins; one more than names
};

}  // namespace opc::zippackage
