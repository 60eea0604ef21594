// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "opc/zippackage/LittleEndian.h"
#include "opc/zippackage/ZipFormat.h"

namespace opc::zippackage {

// Data in headers, besides method, sizes and checksum, that other readers use.

/// Attributes of DOS.
inline constexpr std::uint32_t kDosLabel = 0x08;
inline constexpr std::uint32_t kDosFolder = 0x10;

/// Contradictory statements of a header about whether an item is a file, a folder or a link. They
/// come from the name, which ends in a slash for a folder, the attributes, and extra fields.
enum class MarkFault : std::uint8_t {
  None,
  FolderWithoutSlash,
  LinkNamedFolder,
  LinkOfOtherSystem,   ///< made by a system without links
  LabelOfOtherSystem,  ///< made by a system without volume labels
  ExtraField,          ///< an extra field gives another type than the name
};

/// Such as "is marked as a folder, but its name does not end in a slash".
const char* describe(MarkFault fault);

MarkFault markFaultOf(std::string_view name, const CentralHeader& header);
/// Whether the name is that of a folder, but the Unix mode that of a file. Most readers ignore
/// this.
bool isFolderWithFileMode(std::string_view name, const CentralHeader& header);
/// The contradiction in the extra fields that hold a mode, of either header.
MarkFault markFaultOfFields(std::string_view name, Bytes extra);

/// Whether the extra fields are well-formed and none of them can affect the name, the type or the
/// sizes. May also return false for fields without an effect.
bool hasNoFieldOfWeight(Bytes extra);

/// The path in the Unicode path field (APPNOTE 4.6.9) if it differs from `name`; "" for a malformed
/// field; nothing otherwise. Refers to the bytes of `extra`.
std::optional<std::string_view> otherUnicodePath(std::string_view name, Bytes extra);

/// Phrases for messages about an item, such as "has a malformed Unicode path field".
std::string describeUnicodePath(std::string_view name, Bytes extra);
std::string describeVersion(std::uint16_t versionNeeded);
std::string describeFlags(std::uint16_t flags);

/// What a comment contains that looks like an end record.
enum class EndRecordTrace : std::uint8_t {
  None,
  Signature,  ///< of an end record, of a ZIP64 one or of its locator
  Record      ///< one that a reader could take for the archive's
};
EndRecordTrace findEndRecord(Bytes comment);

/// Whether all readers support this version for stored and deflated items.
constexpr bool isUsualVersion(std::uint16_t versionNeeded) {
  return versionNeeded <= kVersionZip64;
}

}  // namespace opc::zippackage
