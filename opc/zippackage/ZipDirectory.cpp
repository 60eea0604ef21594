// SPDX-License-Identifier: MIT
#include "opc/zippackage/ZipDirectory.h"

#include <algorithm>

#include "opc/Exception.h"
#include "opc/zippackage/ExtraFields.h"
#include "opc/zippackage/HeaderMarks.h"
#include "opc/zippackage/detail/DirectoryPass.h"

namespace opc::zippackage {
namespace {

constexpr std::uint64_t kMaxDirectorySize = 0xFFFFFFFF;  // Offsets in it are kept in 32 bits.

std::string quoted(std::string_view name) {
  return "'" + std::string(name) + "'";
}

std::string describeArchive(const ZipFault& fault) {
  const std::string first = std::to_string(fault.first);
  const std::string second = std::to_string(fault.second);
  switch (fault.kind) {
    case ZipFaultKind::OtherVolume:
      return "it is one volume of an archive of several";
    case ZipFaultKind::EndRecordsDiffer:
      return "its end record and its ZIP64 end record disagree";
    case ZipFaultKind::CountDiffers:
      return "its directory has " + first + " entries, its end record declares " + second;
    case ZipFaultKind::BytesAfterEnd:
      return second + " bytes follow the end of the archive";
    case ZipFaultKind::EndRecordInComment:
      return "its comment holds what readers may take for the end record";
    case ZipFaultKind::EarlierDirectory:
      return "an earlier end record at offset " + first + " leads to another directory";
    case ZipFaultKind::BytesBeforeFirst:
      return second + " bytes stand before the first item";
    default:
      return second + " bytes at offset " + first + " belong to no item";
  }
}

}  // namespace

std::uint64_t ZipEntry::leastEnd() const {
  const std::uint64_t head = LocalHeader::kSize + std::uint64_t{nameLength};
  if (headerOffset > UINT64_MAX - head || packedSize > UINT64_MAX - head - headerOffset) {
    return UINT64_MAX;
  }
  return headerOffset + head + packedSize;
}

ZipDirectory ZipDirectory::read(const PackageFile& file) {
  FileTail tail(file);
  ZipDirectory directory;
  directory.location_ = findDirectory(tail);
  const DirectoryLocation& location = directory.location_;
  if (location.size > kMaxDirectorySize) {
    throw FormatError(
        "RB-5", "its directory of " + std::to_string(location.size) + " bytes is larger than 4 GiB",
        ErrorCode::TooLarge);
  }
  directory.bytes_.resizeForOverwrite(static_cast<std::size_t>(location.size));
  prefault(directory.bytes_.data(), directory.bytes_.size());
  tail.readAt(location.offset, directory.bytes_.data(), directory.bytes_.size());
  detail::DirectoryPass(directory).run();
  return directory;
}

std::string_view ZipDirectory::mappedName(std::uint32_t mapped) const {
  const std::size_t start = mappedStarts_[mapped];
  return std::string_view(mappedNames_).substr(start, mappedStarts_[mapped + 1] - start);
}

CentralHeader ZipDirectory::header(std::size_t entry) const {
  return *CentralHeader::decode(bytes_.bytes().subspan(entries_[entry].record));
}

Bytes ZipDirectory::record(std::size_t entry) const {
  return bytes_.bytes().subspan(entries_[entry].record, header(entry).fullSize());
}

std::uint32_t ZipDirectory::follower(std::size_t entry) const {
  // As a rule items lie in the order in which they are listed.
  const bool isInOrder =
      entry + 1 < entries_.size() && physicalOrder_[entry] == entry &&
      entries_[physicalOrder_[entry + 1]].headerOffset > entries_[entry].headerOffset;
  if (isInOrder) return physicalOrder_[entry + 1];
  const auto isBefore = [this](std::uint64_t offset, std::uint32_t other) {
    return offset < entries_[other].headerOffset;
  };
  const auto next = std::upper_bound(physicalOrder_.begin(), physicalOrder_.end(),
                                     entries_[entry].headerOffset, isBefore);
  if (next == physicalOrder_.end()) return kNoEntry;
  return entries_[*next].headerOffset < location_.offset ? *next : kNoEntry;
}

std::uint64_t ZipDirectory::limitOf(std::size_t entry) const {
  const std::uint32_t next = follower(entry);
  return next == kNoEntry ? location_.offset : entries_[next].headerOffset;
}

Bytes ZipDirectory::extra(std::size_t entry) const {
  const ZipEntry& here = entries_[entry];
  constexpr std::size_t kExtraLengthAt = 30;
  const unsigned char* record = bytes_.data() + here.record;
  return {record + CentralHeader::kSize + here.nameLength, load16(record + kExtraLengthAt)};
}

Bytes ZipDirectory::comment(std::size_t entry) const {
  const Bytes before = extra(entry);
  constexpr std::size_t kCommentLengthAt = 32;
  const unsigned char* record = bytes_.data() + entries_[entry].record;
  return {before.data() + before.size(), load16(record + kCommentLengthAt)};
}

std::string ZipDirectory::describe(const ZipFault& fault) const {
  if (fault.entry == kNoEntry) return describeArchive(fault);
  const auto nameOf = [this](std::uint64_t entry) {
    return entry == kNoEntry ? "the directory"
                             : "item " + quoted(name(static_cast<std::size_t>(entry)));
  };
  const std::string item = nameOf(fault.entry);
  const std::string first = std::to_string(fault.first);
  const std::string second = std::to_string(fault.second);
  switch (fault.kind) {
    case ZipFaultKind::OtherVolume:
      return item + " is on another volume";
    case ZipFaultKind::Encrypted:
      return item + " is encrypted";
    case ZipFaultKind::UnknownMethod:
      return item + " is packed with method " + first + ", only 0 and 8 are known";
    case ZipFaultKind::Zip64ValueMissing:
      return item + " refers to a ZIP64 value that it does not have";
    case ZipFaultKind::StoredSizesDiffer:
      return item + " is stored, but its sizes differ (" + first + " and " + second + ")";
    case ZipFaultKind::NameHasNul:
      return "the name of " + item + " holds a NUL";
    case ZipFaultKind::NameNotUtf8:
      return "the name of " + item + " is marked as UTF-8 and is not";
    case ZipFaultKind::DuplicateName:
      return item + " is there twice";
    case ZipFaultKind::OutsideFile:
      return item + " reaches to offset " + first + ", beyond the end at " + second;
    case ZipFaultKind::Overlap:
      return item + " overlaps " + nameOf(fault.first);
    case ZipFaultKind::ParentSegment:
      return "the name of " + item + " has a segment '..'";
    case ZipFaultKind::ExtraMalformed:
      return item + " " + opc::zippackage::describe(static_cast<ExtraFault>(fault.first));
    case ZipFaultKind::DuplicateFolder:
      return "folder " + quoted(name(fault.entry)) + " is there twice";
    case ZipFaultKind::NameEmpty:
      return "an item has an empty name";
    case ZipFaultKind::OtherUnicodePath:
    case ZipFaultKind::UnicodePathOfOldName:
      return item + " " + describeUnicodePath(name(fault.entry), extra(fault.entry));
    case ZipFaultKind::FolderHoldsData:
      return item + " is marked as a folder and holds " + first + " bytes of data";
    case ZipFaultKind::MarksContradict:
      return item + " " + opc::zippackage::describe(static_cast<MarkFault>(fault.first));
    case ZipFaultKind::VersionTooHigh:
    case ZipFaultKind::VersionOdd:
      return item + " " + describeVersion(static_cast<std::uint16_t>(fault.first));
    case ZipFaultKind::ReservedFlags:
      return item + " " + describeFlags(static_cast<std::uint16_t>(fault.first));
    case ZipFaultKind::Zip64Needless:
      return item + " leaves small values to a ZIP64 field, without a ZIP64 end record";
    case ZipFaultKind::Zip64Unclear:
      return item + " has a ZIP64 field with other values than its header calls for";
    case ZipFaultKind::EndRecordInComment:
      return "the comment of " + item + " holds what readers may take for the end record";
    default:
      return describeArchive(fault);
  }
}

void ZipDirectory::refuseFaults() const {
  for (const ZipFault& fault : faults()) {
    if (fault.severity() != ZipFaultSeverity::Refused) continue;
    const bool isUnsupported = fault.kind == ZipFaultKind::Encrypted ||
                               fault.kind == ZipFaultKind::UnknownMethod ||
                               fault.kind == ZipFaultKind::OtherVolume;
    throw FormatError(fault.rule(), describe(fault),
                      isUnsupported ? ErrorCode::Unsupported : ErrorCode::InvalidPackage);
  }
}

}  // namespace opc::zippackage
