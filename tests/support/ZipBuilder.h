// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace test {

/// Little-endian bytes of a number.
std::string le16(std::uint64_t value);
std::string le32(std::uint64_t value);
std::string le64(std::uint64_t value);

/// An extra field: id, length, data.
std::string extraField(std::uint16_t id, std::string_view data);

std::uint32_t crcOf(std::string_view data);
/// One raw deflate stream.
std::string deflated(std::string_view data);

/// Wrong values for a local header, a directory entry or a data descriptor.
struct HeaderOverrides {
  std::optional<std::uint32_t> signature;
  std::optional<std::uint16_t> madeBy;  ///< directory only
  std::optional<std::uint16_t> versionNeeded;
  std::optional<std::uint16_t> flags;
  std::optional<std::uint16_t> method;
  std::optional<std::uint32_t> dosTime;
  std::optional<std::uint32_t> crc;
  std::optional<std::uint32_t> packedSize;
  std::optional<std::uint32_t> size;
  std::optional<std::uint16_t> nameLength;
  std::optional<std::uint16_t> extraLength;
  std::optional<std::uint16_t> commentLength;       ///< directory only
  std::optional<std::uint16_t> disk;                ///< directory only
  std::optional<std::uint16_t> internalAttributes;  ///< directory only
  std::optional<std::uint32_t> externalAttributes;  ///< directory only
  std::optional<std::uint32_t> offset;              ///< directory only
  std::optional<std::string> name;
  std::string extra;
};

/// An item as it should be, and the values that are to be wrong.
struct ZipItem {
  std::string name = {};
  std::string content = {};
  bool deflate = false;
  std::optional<std::string> packed = std::nullopt;  ///< the packed data, instead of the content's
  std::string before = {};                           ///< bytes before the local header
  std::string comment = {};
  HeaderOverrides local = {};
  HeaderOverrides central = {};

  /// Bit 3: the local header has no sizes and checksum, a descriptor follows the data.
  bool descriptor = false;
  bool descriptorSignature = true;
  bool descriptorWide = false;
  std::optional<std::string> descriptorBytes = std::nullopt;

  bool writeLocal = true;    ///< false: no local header and data
  bool writeCentral = true;  ///< false: no directory entry
};

/// Makes ZIP files byte by byte, valid or not. It shares no code with what it tests.
struct ZipBuilder {
  std::string prefix;  ///< bytes before everything else, which the offsets account for
  std::vector<ZipItem> items;
  std::string beforeEnd;  ///< between directory and end records
  std::string comment;
  std::string suffix;  ///< bytes after everything else

  bool zip64 = false;  ///< writes a ZIP64 end record and its locator, which hold the values

  std::optional<std::uint64_t> entries;  ///< a wrong number, in the record that holds it
  std::optional<std::uint64_t> entriesHere;
  std::optional<std::uint64_t> directorySize;
  std::optional<std::uint64_t> directoryOffset;
  std::optional<std::uint32_t> disk;
  std::optional<std::uint32_t> directoryDisk;
  std::optional<std::uint16_t> commentLength;
  std::optional<std::string> endRecord;      ///< its bytes
  std::optional<std::string> zip64Record;    ///< its bytes
  std::optional<std::uint64_t> zip64Offset;  ///< in the locator
  std::optional<std::uint32_t> disks;        ///< in the locator

  ZipBuilder& add(ZipItem item) {
    items.push_back(std::move(item));
    return *this;
  }
  std::string build() const;
};

}  // namespace test
