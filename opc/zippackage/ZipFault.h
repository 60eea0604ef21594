// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace opc::zippackage {

/// What can be wrong with a ZIP file and shows in its directory and end records.
enum class ZipFaultKind : std::uint8_t {
  // Refused when the package is opened.
  OtherVolume,       ///< it is part of an archive of several volumes
  EndRecordsDiffer,  ///< the end record and its ZIP64 twin say different things
  CountDiffers,      ///< first: entries found; second: entries declared
  Encrypted,
  UnknownMethod,      ///< first: the method
  Zip64ValueMissing,  ///< a value is said to be in a ZIP64 field, which does not hold it
  StoredSizesDiffer,  ///< first: size; second: packed size
  NameHasNul,
  NameNotUtf8,
  DuplicateName,       ///< first: the other entry
  OutsideFile,         ///< first: where its data would end at least; second: where they must
  Overlap,             ///< first: the other entry, or kNoEntry for the directory
  ParentSegment,       ///< a segment `..` in the name
  OtherUnicodePath,    ///< a Unicode path field gives another name, which no old name needs
  VersionTooHigh,      ///< first: the version needed
  ReservedFlags,       ///< first: the flags
  EndRecordInComment,  ///< in the comment of the archive or of an entry
  // Allowed.
  BytesAfterEnd,     ///< first: offset; second: how many
  BytesBeforeFirst,  ///< second: how many
  UnusedBytes,       ///< first: offset; second: how many
  ExtraMalformed,    ///< first: the ExtraFault
  DuplicateFolder,   ///< first: the other entry
  NameEmpty,
  UnicodePathOfOldName,  ///< a Unicode path field gives another name for one that is not Unicode
  FolderHoldsData,       ///< first: size; of an item that is marked as a folder in any way
  MarksContradict,       ///< first: the MarkFault
  VersionOdd,            ///< first: the version needed, with something in its upper byte
  EarlierDirectory,      ///< first: offset of an earlier end record, whose directory is there
  Zip64Needless,         ///< a ZIP64 field of small values, without a ZIP64 end record
  Zip64Unclear,          ///< a ZIP64 field of other values than the header calls for
};

enum class ZipFaultSeverity { Refused, Warning };

inline constexpr std::uint32_t kNoEntry = 0xFFFFFFFF;

/// A fault, kept small: a hostile directory may hold one an entry. ZipDirectory::describe makes a
/// text of it.
struct ZipFault {
  ZipFaultKind kind;
  std::uint32_t entry = kNoEntry;
  std::uint64_t first = 0;
  std::uint64_t second = 0;

  ZipFaultSeverity severity() const;
  /// The rule that is broken, such as "ZP-5".
  const char* rule() const;
};

}  // namespace opc::zippackage
