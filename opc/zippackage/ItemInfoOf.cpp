// SPDX-License-Identifier: MIT
#include "opc/zippackage/ItemInfoOf.h"

#include "opc/zippackage/DosTime.h"
#include "opc/zippackage/ExtraFields.h"

namespace opc::zippackage {

using interfaces::ItemInfo;
using interfaces::ItemKind;

namespace {

std::int64_t timeOf(const CentralHeader& header, Bytes extra) {
  const auto exact = extra.empty() ? std::nullopt : TimeExtra::find(extra);
  return exact.value_or(DosTime::toUnix(header.dosTime));
}

}  // namespace

ItemKind itemKindOf(std::string_view name, const CentralHeader& header) {
  constexpr std::uint32_t kTypeMask = 0170000;
  constexpr std::uint32_t kRegularFile = 0100000;
  constexpr std::uint32_t kSymbolicLink = 0120000;
  constexpr std::uint32_t kVolumeLabel = 0x08;
  if (!name.empty() && name.back() == '/') return ItemKind::Folder;
  const int host = header.madeBy >> 8;
  if (host == 0 && (header.externalAttributes & kVolumeLabel) != 0) return ItemKind::Special;
  if (host != kHostUnix) return ItemKind::File;
  const std::uint32_t type = (header.externalAttributes >> 16) & kTypeMask;
  if (type == kSymbolicLink) return ItemKind::SymbolicLink;
  return type == 0 || type == kRegularFile ? ItemKind::File : ItemKind::Special;
}

ItemInfo itemInfoOf(const ZipDirectory& directory, std::size_t item) {
  constexpr std::uint32_t kOwnerExecutes = 0100u << 16;
  const ZipEntry& entry = directory.entries()[item];
  const CentralHeader header = directory.header(item);
  ItemInfo info;
  info.name = directory.name(item);
  info.kind = entry.kind;
  info.compressed = entry.method != kStored;
  info.executable =
      header.madeBy >> 8 == kHostUnix && (header.externalAttributes & kOwnerExecutes) != 0;
  info.crc = entry.crc;
  info.size = entry.size;
  info.packedSize = entry.packedSize;
  info.modified = timeOf(header, directory.extra(item));
  return info;
}

}  // namespace opc::zippackage
