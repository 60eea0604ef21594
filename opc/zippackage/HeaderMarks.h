// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "opc/zippackage/LittleEndian.h"
#include "opc/zippackage/ZipFormat.h"

namespace opc::zippackage {

// What headers say besides method, sizes and checksum, and other readers act upon.

/// Attributes of DOS.
inline constexpr std::uint32_t kDosLabel = 0x08;
inline constexpr std::uint32_t kDosFolder = 0x10;

/// Marks of file, folder or link that contradict each other: of the name, which ends in a slash for
/// a folder, the attributes, and extra fields.
enum class MarkFault : std::uint8_t {
  None,
  FolderWithoutSlash,
  LinkNamedFolder,
  LinkOfOtherSystem,   ///< made by a system without links
  LabelOfOtherSystem,  ///< made by a system without volume labels
  ExtraField,          ///< an extra field says something else than the name
};

/// Such as "is marked as a folder, but its name does not end in a slash".
const char* describe(MarkFault fault);

MarkFault markFaultOf(std::string_view name, const CentralHeader& header);
/// Whether the mode is that of a file, though the name is that of a folder. Few readers mind.
bool isFolderWithFileMode(std::string_view name, const CentralHeader& header);
/// Of the fields that hold a mode. For both headers.
MarkFault markFaultOfFields(std::string_view name, Bytes extra);

/// Whether extra fields are whole, and none of them says anything of name, type or sizes. False as
/// well for some of which that is true.
bool hasNoFieldOfWeight(Bytes extra);

/// The path that a Unicode path field gives, when it is not `name`; "" for a malformed field. Valid
/// as long as `extra`.
std::optional<std::string_view> otherUnicodePath(std::string_view name, Bytes extra);

/// Texts about an item: "has ...".
std::string describeUnicodePath(std::string_view name, Bytes extra);
std::string describeVersion(std::uint16_t versionNeeded);
std::string describeFlags(std::uint16_t flags);

/// What of an end record a comment holds.
enum class EndRecordTrace : std::uint8_t {
  None,
  Signature,  ///< of an end record, of a ZIP64 one or of its locator
  Record      ///< one that a reader could take for the archive's
};
EndRecordTrace findEndRecord(Bytes comment);

/// Whether an item of that version can be read by all readers, as far as this is about stored and
/// deflated data.
constexpr bool isUsualVersion(std::uint16_t versionNeeded) {
  return versionNeeded <= kVersionZip64;
}

}  // namespace opc::zippackage
