// SPDX-License-Identifier: MIT
#include "opc/zippackage/HeaderMarks.h"

#include <algorithm>
#include <array>

#include "opc/zippackage/ExtraFields.h"

namespace opc::zippackage {
namespace {

constexpr std::uint16_t kUnicodePathId = 0x7075;
constexpr std::size_t kUnicodePathHead = 5;  // version, checksum of the stored name
constexpr std::uint16_t kAttributesId = 0x6C78;
constexpr std::uint16_t kAsiUnixId = 0x756E;

/// The type in a mode.
enum class ModeType : std::uint8_t { None = 0, Folder = 4, File = 8, Link = 10 };

constexpr ModeType typeOf(std::uint32_t mode) {
  return static_cast<ModeType>((mode >> 12) & 0xF);
}

bool isOf(std::uint16_t madeBy, std::initializer_list<std::uint16_t> hosts) {
  return std::find(hosts.begin(), hosts.end(), madeBy >> 8) != hosts.end();
}

// In the modes of that system the type has other bits.
bool isAmigaFolder(const CentralHeader& header) {
  constexpr std::uint32_t kTypeMask = 06000u << 16;
  constexpr std::uint32_t kFolder = 04000u << 16;
  return isOf(header.madeBy, {kHostAmiga}) && (header.externalAttributes & kTypeMask) == kFolder;
}

bool agreesWithName(std::string_view name, ModeType type) {
  if (type == ModeType::Folder) return name.ends_with('/');
  return type == ModeType::None || type == ModeType::File;
}

std::string_view textOf(Bytes bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// A bitmap of what follows: made by, internal attributes, external attributes.
bool isAttributesFieldClear(std::string_view name, Bytes data) {
  constexpr unsigned char kMadeBy = 1;
  constexpr unsigned char kInternal = 2;
  constexpr unsigned char kExternal = 4;
  constexpr unsigned char kMore = 0x80;
  if (data.empty()) return false;
  const unsigned char fields = data[0];
  const auto* end = std::find_if(data.data(), data.data() + data.size(),
                                 [](unsigned char byte) { return (byte & kMore) == 0; });
  if (end == data.data() + data.size()) return false;
  Bytes left = data.subspan(static_cast<std::size_t>(end - data.data()) + 1);
  const std::size_t madeBySize = (fields & kMadeBy) != 0 ? 2 : 0;
  const std::size_t before = madeBySize + ((fields & kInternal) != 0 ? 2 : 0);
  if ((fields & kExternal) == 0) return left.size() >= before;
  if (left.size() < before + 4) return false;
  CentralHeader header;
  if (madeBySize != 0) header.madeBy = load16(left.data());
  header.externalAttributes = load32(left.data() + before);
  return agreesWithName(name, typeOf(header.externalAttributes >> 16)) &&
         markFaultOf(name, header) == MarkFault::None;
}

// Checksum, mode, and what does not matter.
bool isAsiFieldClear(std::string_view name, Bytes data) {
  constexpr std::size_t kModeAt = 4;
  return data.size() >= kModeAt + 2 && agreesWithName(name, typeOf(load16(data.data() + kModeAt)));
}

}  // namespace

const char* describe(MarkFault fault) {
  switch (fault) {
    case MarkFault::None:
      break;
    case MarkFault::FolderWithoutSlash:
      return "is marked as a folder, but its name does not end in a slash";
    case MarkFault::LinkNamedFolder:
      return "is marked as a symbolic link, but its name is that of a folder";
    case MarkFault::LinkOfOtherSystem:
      return "is marked as a symbolic link, but made by a system without them";
    case MarkFault::LabelOfOtherSystem:
      return "is marked as a volume label, but made by a system without them";
    case MarkFault::ExtraField:
      return "has an extra field that gives it another type than its name";
  }
  return "";
}

MarkFault markFaultOf(std::string_view name, const CentralHeader& header) {
  const std::uint32_t attributes = header.externalAttributes;
  const ModeType type = typeOf(attributes >> 16);
  const bool isFolder = name.ends_with('/');
  if (type == ModeType::Link) {
    if (isFolder) return MarkFault::LinkNamedFolder;
    const bool hasLinks = isOf(header.madeBy, {kHostUnix, kHostDarwin});
    return hasLinks ? MarkFault::None : MarkFault::LinkOfOtherSystem;
  }
  const bool hasFolderMark =
      type == ModeType::Folder || (attributes & kDosFolder) != 0 || isAmigaFolder(header);
  if (!isFolder && hasFolderMark) return MarkFault::FolderWithoutSlash;
  const bool isLabel = (attributes & kDosLabel) != 0;
  if (isLabel && !isOf(header.madeBy, {kHostDos, kHostHpfs, kHostNtfs, kHostVfat})) {
    return MarkFault::LabelOfOtherSystem;
  }
  return MarkFault::None;
}

bool isFolderWithFileMode(std::string_view name, const CentralHeader& header) {
  return name.ends_with('/') && typeOf(header.externalAttributes >> 16) == ModeType::File;
}

MarkFault markFaultOfFields(std::string_view name, Bytes extra) {
  ExtraFieldWalk walk(extra);
  while (walk.next()) {
    const bool isClear =
        (walk.id() != kAttributesId || isAttributesFieldClear(name, walk.data())) &&
        (walk.id() != kAsiUnixId || isAsiFieldClear(name, walk.data()));
    if (!isClear) return MarkFault::ExtraField;
  }
  return MarkFault::None;
}

bool hasNoFieldOfWeight(Bytes extra) {
  ExtraFieldWalk walk(extra);
  while (walk.next()) {
    const std::uint16_t id = walk.id();
    const bool hasWeight =
        id == Zip64Extra::kId || id == kUnicodePathId || id == kAttributesId || id == kAsiUnixId;
    if (hasWeight) return false;
  }
  return !walk.isMalformed();
}

std::optional<std::string_view> otherUnicodePath(std::string_view name, Bytes extra) {
  ExtraFieldWalk walk(extra);
  while (walk.next()) {
    if (walk.id() != kUnicodePathId) continue;
    if (walk.data().size() < kUnicodePathHead) return std::string_view();
    const std::string_view path = textOf(walk.data().subspan(kUnicodePathHead));
    if (path != name) return path;
  }
  return std::nullopt;
}

std::string describeUnicodePath(std::string_view name, Bytes extra) {
  const auto path = otherUnicodePath(name, extra).value_or("");
  if (path.empty()) return "has a malformed Unicode path field";
  return "has the name '" + std::string(path) + "' in its Unicode path field";
}

std::string describeVersion(std::uint16_t versionNeeded) {
  return "needs version " + std::to_string(versionNeeded) + " of the format, more than " +
         std::to_string(kVersionZip64);
}

std::string describeFlags(std::uint16_t flags) {
  return "has reserved bits in its flags (" + std::to_string(flags & kReservedFlags) + ")";
}

EndRecordTrace findEndRecord(Bytes comment) {
  constexpr std::array kSignatures{EndRecord::kSignature, Zip64Locator::kSignature,
                                   Zip64EndRecord::kSignature};
  EndRecordTrace found = EndRecordTrace::None;
  for (std::size_t at = 0; at + 4 <= comment.size(); ++at) {
    const Bytes here = comment.subspan(at);
    const auto record = EndRecord::decode(here);
    if (record && record->disk == 0 && record->directoryDisk == 0) return EndRecordTrace::Record;
    const auto* signature = std::find(kSignatures.begin(), kSignatures.end(), load32(here.data()));
    if (signature != kSignatures.end()) found = EndRecordTrace::Signature;
  }
  return found;
}

}  // namespace opc::zippackage
