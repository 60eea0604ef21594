// SPDX-License-Identifier: MIT
#include "opc/zippackage/DirectoryPass.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <numeric>
#include <string>

#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/zippackage/CodePage437.h"
#include "opc/zippackage/DuplicateNames.h"
#include "opc/zippackage/ExtraFields.h"

namespace opc::zippackage {
namespace {

bool isAscii(std::string_view text) {
  constexpr std::uint64_t kHighBits = 0x8080808080808080u;
  const char* next = text.data();
  std::size_t left = text.size();
  for (; left >= 8; left -= 8, next += 8) {
    std::uint64_t block = 0;
    std::memcpy(&block, next, 8);
    if ((block & kHighBits) != 0) return false;
  }
  return std::all_of(next, next + left,
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

bool isSeparator(char c) {
  return c == '/' || c == '\\';
}

bool isDigitalSignature(Bytes rest) {
  constexpr std::uint32_t kSignature = 0x05054b50;
  constexpr std::size_t kHeaderSize = 6;
  return rest.size() >= kHeaderSize && load32(rest.data()) == kSignature &&
         rest.size() - kHeaderSize == load16(rest.data() + 4);
}

}  // namespace

void DirectoryPass::run() {
  readEntries();
  checkDuplicates();
  checkPlaces();
}

void DirectoryPass::readEntries() {
  const Bytes bytes = directory_.bytes_.bytes();
  // The smaller of what is declared and what there is room for.
  directory_.entries_.reserve(static_cast<std::size_t>(
      std::min<std::uint64_t>(directory_.location_.entries, bytes.size() / CentralHeader::kSize)));
  std::size_t at = 0;
  while (at < bytes.size()) {
    const auto header = CentralHeader::decode(bytes.subspan(at));
    if (!header && isDigitalSignature(bytes.subspan(at))) break;
    if (!header || header->fullSize() > bytes.size() - at) {
      throw FormatError("ZP-16", "entry " + std::to_string(current_ + 1) +
                                     " of its directory is cut off or no entry");
    }
    readEntry(at, *header);
    at += header->fullSize();
    ++current_;
  }
  current_ = kNoEntry;
  const std::size_t found = directory_.entries_.size();
  if (found != directory_.location_.entries) {
    note(ZipFaultKind::CountDiffers, found, directory_.location_.entries);
  }
}

void DirectoryPass::readEntry(std::size_t at, const CentralHeader& header) {
  ZipEntry entry;
  entry.record = static_cast<std::uint32_t>(at);
  entry.headerOffset = header.headerOffset;
  entry.packedSize = header.packedSize;
  entry.size = header.size;
  entry.crc = header.crc;
  entry.nameLength = header.nameLength;
  entry.flags = header.flags;
  entry.method = header.method;
  directory_.entries_.push_back(entry);
  ZipEntry& kept = directory_.entries_.back();
  readZip64(kept, header);
  checkMethod(kept);
  checkName(kept);
}

void DirectoryPass::readZip64(ZipEntry& entry, const CentralHeader& header) {
  Zip64Extra wide;
  if (header.size == kElsewhere32) wide.size = 0;
  if (header.packedSize == kElsewhere32) wide.packedSize = 0;
  if (header.headerOffset == kElsewhere32) wide.headerOffset = 0;
  if (header.disk == kElsewhere16) wide.disk = 0;
  const bool isNeeded = wide.size || wide.packedSize || wide.headerOffset || wide.disk;
  bool isThere = false;
  ExtraFieldWalk walk(directory_.extra(current_));
  while (walk.next()) {
    if (walk.id() != Zip64Extra::kId || isThere) continue;
    isThere = wide.decode(walk.data());
  }
  if (walk.isMalformed()) note(ZipFaultKind::ExtraMalformed);
  if (isNeeded && !isThere) note(ZipFaultKind::Zip64ValueMissing);
  entry.size = wide.size.value_or(entry.size);
  entry.packedSize = wide.packedSize.value_or(entry.packedSize);
  entry.headerOffset = wide.headerOffset.value_or(entry.headerOffset);
  if (wide.disk.value_or(header.disk) != 0) note(ZipFaultKind::OtherVolume);
}

void DirectoryPass::checkMethod(const ZipEntry& entry) {
  constexpr std::uint16_t kAesMethod = 99;
  if ((entry.flags & kAnyEncryption) != 0 || entry.method == kAesMethod) {
    note(ZipFaultKind::Encrypted);
  } else if (entry.method != kStored && entry.method != kDeflated) {
    note(ZipFaultKind::UnknownMethod, entry.method);
  } else if (entry.method == kStored && entry.size != entry.packedSize) {
    note(ZipFaultKind::StoredSizesDiffer, entry.size, entry.packedSize);
  }
}

void DirectoryPass::checkName(ZipEntry& entry) {
  const std::string_view name = directory_.storedName(current_);
  if (name.empty()) return note(ZipFaultKind::NameEmpty);
  if (std::memchr(name.data(), 0, name.size()) != nullptr) note(ZipFaultKind::NameHasNul);
  checkParentSegments(name);
  if (isAscii(name)) return;
  if ((entry.flags & kFlagUtf8) != 0) {
    if (!isUtf8(name)) note(ZipFaultKind::NameNotUtf8);
    return;
  }
  if (directory_.mappedStarts_.empty()) directory_.mappedStarts_.push_back(0);
  entry.mappedName = static_cast<std::uint32_t>(directory_.mappedStarts_.size() - 1);
  appendFromCodePage437(directory_.mappedNames_, name);
  directory_.mappedStarts_.push_back(directory_.mappedNames_.size());
}

void DirectoryPass::checkParentSegments(std::string_view name) {
  for (std::size_t at = name.find(".."); at != std::string_view::npos;
       at = name.find("..", at + 1)) {
    const bool begins = at == 0 || isSeparator(name[at - 1]);
    const bool ends = at + 2 == name.size() || isSeparator(name[at + 2]);
    if (begins && ends) return note(ZipFaultKind::ParentSegment);
  }
}

void DirectoryPass::checkDuplicates() {
  const auto nameOf = [this](std::uint32_t entry) { return directory_.name(entry); };
  const auto count = static_cast<std::uint32_t>(directory_.entries_.size());
  DuplicateNames names(count);
  std::array<std::uint64_t, 16> hashes;
  const auto first = static_cast<std::uint32_t>(std::min<std::size_t>(hashes.size(), count));
  for (std::uint32_t entry = 0; entry < first; ++entry) {
    hashes[entry] = names.prepare(nameOf(entry));
  }
  for (std::uint32_t entry = 0; entry < count; ++entry) {
    std::uint64_t& hash = hashes[entry % hashes.size()];
    const std::uint32_t other = names.add(entry, hash, nameOf);
    if (other != kNoEntry) noteTwice(entry, other);
    if (count - entry > hashes.size()) hash = names.prepare(nameOf(entry + first));
  }
}

void DirectoryPass::noteTwice(std::uint32_t entry, std::uint32_t other) {
  const bool isFolder = directory_.name(entry).ends_with('/');
  noteFor(entry, isFolder ? ZipFaultKind::FolderTwice : ZipFaultKind::NameTwice, other, 0);
}

// Sorted by where they begin, entries that share bytes are neighbours, or follow one that reaches
// over its neighbours: hence the one that ends last so far.
void DirectoryPass::checkPlaces() {
  const auto& entries = directory_.entries_;
  auto& order = directory_.physicalOrder_;
  order.resize(entries.size());
  std::iota(order.begin(), order.end(), 0u);
  const auto isBefore = [&](std::uint32_t a, std::uint32_t b) {
    return entries[a].headerOffset < entries[b].headerOffset;
  };
  if (!std::is_sorted(order.begin(), order.end(), isBefore)) {
    std::sort(order.begin(), order.end(), isBefore);
  }
  const std::uint64_t start =
      order.empty() ? directory_.location_.offset : entries[order[0]].headerOffset;
  if (start > 0) note(ZipFaultKind::BytesBeforeFirst, 0, start);
  std::uint32_t last = kNoEntry;
  for (const std::uint32_t entry : order) {
    checkPlace(entry, last);
    if (last == kNoEntry || entries[entry].leastEnd() > entries[last].leastEnd()) last = entry;
  }
  if (last == kNoEntry) return;
  const std::uint64_t end = entries[last].leastEnd();
  const std::uint64_t gap =
      directory_.location_.offset - std::min(end, directory_.location_.offset);
  if (gap > kMostUnseen) note(ZipFaultKind::UnusedBytes, end, gap);
}

void DirectoryPass::checkPlace(std::uint32_t entry, std::uint32_t previous) {
  const ZipEntry& here = directory_.entries_[entry];
  const std::uint64_t limit = directory_.location_.offset;
  if (here.headerOffset >= directory_.location_.archiveEnd ||
      here.leastEnd() > directory_.location_.archiveEnd) {
    noteFor(entry, ZipFaultKind::OutsideFile, here.leastEnd(), directory_.location_.archiveEnd);
  } else if (here.leastEnd() > limit) {
    noteFor(entry, ZipFaultKind::Overlap, kNoEntry, 0);
  }
  if (previous == kNoEntry) return;
  const std::uint64_t before = directory_.entries_[previous].leastEnd();
  if (before > here.headerOffset) {
    noteFor(entry, ZipFaultKind::Overlap, previous, 0);
  } else if (here.headerOffset - before > kMostUnseen) {
    noteFor(kNoEntry, ZipFaultKind::UnusedBytes, before, here.headerOffset - before);
  }
}

void DirectoryPass::note(ZipFaultKind kind, std::uint64_t first, std::uint64_t second) {
  noteFor(current_, kind, first, second);
}

void DirectoryPass::noteFor(std::uint32_t entry, ZipFaultKind kind, std::uint64_t first,
                            std::uint64_t second) {
  directory_.location_.faults.push_back({kind, entry, first, second});
}

}  // namespace opc::zippackage
