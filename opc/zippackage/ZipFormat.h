// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "opc/zippackage/LittleEndian.h"

namespace opc::zippackage {

// The records of the format (APPNOTE 6.3), with one value type for each. `decode` takes bytes that
// begin with the signature of the record; it returns nothing if they are too few or the signature
// is different. `encode` writes kSize bytes. The variable data after a record (name, extra fields,
// comment) is not part of it. Fields have the values in the file, so 0xFFFFFFFF may refer to a
// ZIP64 field.

inline constexpr std::uint16_t kStored = 0;
inline constexpr std::uint16_t kDeflated = 8;

inline constexpr std::uint16_t kFlagEncrypted = 1u << 0;
inline constexpr std::uint16_t kFlagDescriptor = 1u << 3;
inline constexpr std::uint16_t kFlagStronglyEncrypted = 1u << 6;
inline constexpr std::uint16_t kFlagUtf8 = 1u << 11;
inline constexpr std::uint16_t kFlagMaskedHeader = 1u << 13;
inline constexpr std::uint16_t kAnyEncryption =
    kFlagEncrypted | kFlagStronglyEncrypted | kFlagMaskedHeader;

/// Flags that have no meaning for stored and deflated items, or one that few readers know.
inline constexpr std::uint16_t kReservedFlags = 0xD7B0;

inline constexpr std::uint16_t kVersionPlain = 20;
inline constexpr std::uint16_t kVersionZip64 = 45;
/// Hosts, in the upper byte of `madeBy`.
inline constexpr std::uint16_t kHostDos = 0;
inline constexpr std::uint16_t kHostAmiga = 1;
inline constexpr std::uint16_t kHostUnix = 3;
inline constexpr std::uint16_t kHostHpfs = 6;
inline constexpr std::uint16_t kHostNtfs = 10;
inline constexpr std::uint16_t kHostVfat = 14;
inline constexpr std::uint16_t kHostDarwin = 19;

/// In a 16- or 32-bit field: the value is in a ZIP64 field or record.
inline constexpr std::uint16_t kZip64Sentinel16 = 0xFFFF;
inline constexpr std::uint32_t kZip64Sentinel32 = 0xFFFFFFFF;

/// The local file header before the data of each item (APPNOTE 4.3.7).
struct LocalHeader {
  static constexpr std::uint32_t kSignature = 0x04034b50;
  static constexpr std::size_t kSize = 30;

  std::uint16_t versionNeeded = kVersionPlain;
  std::uint16_t flags = 0;
  std::uint16_t method = kStored;
  std::uint32_t dosTime = 0;  ///< the date in the upper half
  std::uint32_t crc = 0;
  std::uint32_t packedSize = 0;
  std::uint32_t size = 0;
  std::uint16_t nameLength = 0;
  std::uint16_t extraLength = 0;

  void encode(unsigned char* to) const;
  static std::optional<LocalHeader> decode(Bytes from);
};

/// The entry of an item in the central directory (APPNOTE 4.3.12).
struct CentralHeader {
  static constexpr std::uint32_t kSignature = 0x02014b50;
  static constexpr std::size_t kSize = 46;
  static constexpr std::size_t kOffsetAt = 42;  ///< where `headerOffset` stands

  std::uint16_t madeBy = (kHostUnix << 8) | kVersionZip64;  ///< the host in the upper byte
  std::uint16_t versionNeeded = kVersionPlain;
  std::uint16_t flags = 0;
  std::uint16_t method = kStored;
  std::uint32_t dosTime = 0;
  std::uint32_t crc = 0;
  std::uint32_t packedSize = 0;
  std::uint32_t size = 0;
  std::uint16_t nameLength = 0;
  std::uint16_t extraLength = 0;
  std::uint16_t commentLength = 0;
  std::uint16_t disk = 0;
  std::uint16_t internalAttributes = 0;
  std::uint32_t externalAttributes = 0;  ///< from Unix and Darwin the mode in the upper half
  std::uint32_t headerOffset = 0;

  std::size_t fullSize() const {
    return kSize + std::size_t{nameLength} + extraLength + commentLength;
  }
  void encode(unsigned char* to) const;
  static std::optional<CentralHeader> decode(Bytes from);
};

/// The record after the data of an item whose header was written before its size was known (APPNOTE
/// 4.3.9).
struct DataDescriptor {
  static constexpr std::uint32_t kSignature = 0x08074b50;
  static constexpr std::size_t kMaxSize = 24;
  static constexpr std::size_t kMaxNarrowSize = 16;

  std::uint32_t crc = 0;
  std::uint64_t packedSize = 0;
  std::uint64_t size = 0;

  /// Returns how many bytes it wrote, at most kMaxSize. The signature is customary but optional.
  std::size_t encode(unsigned char* to, bool wide, bool withSignature) const;
  /// The length of the descriptor at the beginning of `from` if it has exactly these values, with
  /// sizes of 32 or 64 bits, with or without a signature; 0 otherwise. Two forms can match for an
  /// empty item: then that of length `room`, the space before the next record, is chosen, or else
  /// the one that `wideFirst` prefers.
  std::size_t lengthIn(Bytes from, bool wideFirst, std::uint64_t room) const;
};

/// The end record, the last record of the file (APPNOTE 4.3.16).
struct EndRecord {
  static constexpr std::uint32_t kSignature = 0x06054b50;
  static constexpr std::size_t kSize = 22;

  std::uint16_t disk = 0;
  std::uint16_t directoryDisk = 0;
  std::uint16_t entriesHere = 0;
  std::uint16_t entries = 0;
  std::uint32_t directorySize = 0;
  std::uint32_t directoryOffset = 0;
  std::uint16_t commentLength = 0;

  void encode(unsigned char* to) const;
  static std::optional<EndRecord> decode(Bytes from);
};

/// The record directly before the end record if there is a ZIP64 end record (APPNOTE 4.3.15).
struct Zip64Locator {
  static constexpr std::uint32_t kSignature = 0x07064b50;
  static constexpr std::size_t kSize = 20;

  std::uint32_t recordDisk = 0;
  std::uint64_t recordOffset = 0;
  std::uint32_t disks = 1;

  void encode(unsigned char* to) const;
  static std::optional<Zip64Locator> decode(Bytes from);
};

/// The end record with 64-bit values (APPNOTE 4.3.14).
struct Zip64EndRecord {
  static constexpr std::uint32_t kSignature = 0x06064b50;
  static constexpr std::size_t kSize = 56;
  static constexpr std::uint64_t kUncounted = 12;  ///< its leading bytes that recordSize leaves out

  std::uint64_t recordSize = kSize - kUncounted;
  std::uint16_t madeBy = (kHostUnix << 8) | kVersionZip64;
  std::uint16_t versionNeeded = kVersionZip64;
  std::uint32_t disk = 0;
  std::uint32_t directoryDisk = 0;
  std::uint64_t entriesHere = 0;
  std::uint64_t entries = 0;
  std::uint64_t directorySize = 0;
  std::uint64_t directoryOffset = 0;

  void encode(unsigned char* to) const;
  static std::optional<Zip64EndRecord> decode(Bytes from);
};

}  // namespace opc::zippackage
