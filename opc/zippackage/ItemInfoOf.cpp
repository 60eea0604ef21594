// SPDX-License-Identifier: MIT
#include "opc/zippackage/ItemInfoOf.h"

#include "opc/zippackage/ExtraFields.h"
#include "opc/zippackage/detail/DosTime.h"

namespace opc::zippackage {

using interfaces::ItemInfo;
using interfaces::ItemKind;

namespace {

std::int64_t timeOf(const CentralHeader& header, Bytes extra) {
  const auto exact = extra.empty() ? std::nullopt : TimeExtra::find(extra);
  return exact.value_or(detail::DosTime::toUnix(header.dosTime));
}

bool hasUnixMode(const CentralHeader& header) {
  const int host = header.madeBy >> 8;
  return host == kHostUnix || host == kHostDarwin;
}

bool hasDosAttributes(const CentralHeader& header) {
  const int host = header.madeBy >> 8;
  return host == kHostDos || host == kHostHpfs || host == kHostNtfs || host == kHostVfat;
}

ItemKind kindOfMode(std::uint32_t mode) {
  constexpr std::uint32_t kTypeMask = 0170000;
  constexpr std::uint32_t kNoType = 0;
  constexpr std::uint32_t kRegularFile = 0100000;
  constexpr std::uint32_t kFolder = 0040000;
  constexpr std::uint32_t kSymbolicLink = 0120000;
  switch (mode & kTypeMask) {
    case kNoType:
    case kRegularFile:
      return ItemKind::File;
    case kFolder:
      return ItemKind::Folder;
    case kSymbolicLink:
      return ItemKind::SymbolicLink;
    default:
      return ItemKind::Special;
  }
}

ItemKind kindOfAttributes(const CentralHeader& header) {
  constexpr std::uint32_t kVolumeLabel = 0x08;
  if (hasUnixMode(header)) return kindOfMode(header.externalAttributes >> 16);
  const bool isLabel = hasDosAttributes(header) && (header.externalAttributes & kVolumeLabel) != 0;
  return isLabel ? ItemKind::Special : ItemKind::File;
}

}  // namespace

// A link named "d/" is meant to be taken for a folder.
ItemKind itemKindOf(std::string_view name, const CentralHeader& header) {
  const ItemKind kind = kindOfAttributes(header);
  if (name.ends_with('/')) return kind == ItemKind::File ? ItemKind::Folder : kind;
  return kind == ItemKind::Folder ? ItemKind::Special : kind;
}

ItemInfo itemInfoOf(const ZipDirectory& directory, std::size_t item) {
  constexpr std::uint32_t kOwnerExecutes = 0100u << 16;
  const ZipEntry& entry = directory.entries()[item];
  const CentralHeader header = directory.header(item);
  ItemInfo info;
  info.name = directory.name(item);
  info.kind = entry.kind;
  info.compressed = entry.method != kStored;
  info.executable = hasUnixMode(header) && (header.externalAttributes & kOwnerExecutes) != 0;
  info.crc = entry.crc;
  info.size = entry.size;
  info.packedSize = entry.packedSize;
  info.modified = timeOf(header, directory.extra(item));
  return info;
}

}  // namespace opc::zippackage
