// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <vector>

#include "opc/ByteBuffer.h"
#include "opc/zippackage/PackageFile.h"
#include "opc/zippackage/ZipFault.h"

namespace opc::zippackage {

/// The end of a package file, read at once: it holds the end records and, in a small package, the
/// directory too. The file must outlive it.
class FileTail {
 public:
  static constexpr std::size_t kSize = std::size_t{128} << 10;
  static constexpr std::size_t kLongSize = std::size_t{16} << 20;

  explicit FileTail(const PackageFile& file) : file_(file) { hold(kSize); }
  /// Holds kLongSize bytes from now on, where there are as many.
  void lengthen() { hold(kLongSize); }

  const PackageFile& file() const { return file_; }
  std::uint64_t start() const { return start_; }  ///< offset of the first byte held
  bool isLong() const { return bytes_.size() > kSize; }
  const unsigned char* at(std::uint64_t offset) const { return bytes_.data() + (offset - start_); }
  /// Like PackageFile::readAt(), but takes the bytes that the tail holds from memory.
  void readAt(std::uint64_t offset, unsigned char* into, std::size_t size) const;

 private:
  void hold(std::size_t atMost);

  const PackageFile& file_;
  std::uint64_t start_ = 0;
  ByteBuffer bytes_;
};

/// Where the directory lies, by the end records.
struct DirectoryLocation {
  std::uint64_t offset = 0;
  std::uint64_t size = 0;
  std::uint64_t entries = 0;
  std::uint64_t endRecords = 0;  ///< offset of the first end record (ZIP64 or not)
  bool isZip64 = false;          ///< whether there is a ZIP64 end record
  std::uint64_t archiveEnd = 0;  ///< offset after the archive comment
  std::vector<unsigned char> comment;
  /// Whether an end record of an empty archive comes before the chosen end record, for example in
  /// the data of an item. Some readers use it if the local headers and the directory disagree.
  bool hasEarlierRecord = false;
  std::vector<ZipFault> faults;
};

/// Finds the end records (APPNOTE 4.3.14 to 4.3.16). If several places look like an end record, the
/// one is chosen whose directory is where it says and whose comment ends with the file. Bytes after
/// the end are allowed within the tail, which is lengthened if nothing in it looks like an end
/// record. Throws FormatError if there is no end record, if the directory is not at its stated
/// offset, and if readers would disagree: two records fit and one lies in the comment of the other,
/// or another reader would use a record after the chosen one.
DirectoryLocation findDirectory(FileTail& tail);

}  // namespace opc::zippackage
