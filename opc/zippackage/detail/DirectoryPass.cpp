// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/DirectoryPass.h"

#include <algorithm>
#include <cstring>
#include <numeric>
#include <string>

#include "opc/CommonLength.h"
#include "opc/Exception.h"
#include "opc/HashIndex.h"
#include "opc/KeyedHash.h"
#include "opc/Text.h"
#include "opc/Words.h"
#include "opc/zippackage/ExtraFields.h"
#include "opc/zippackage/HeaderMarks.h"
#include "opc/zippackage/ItemInfoOf.h"
#include "opc/zippackage/detail/CodePage437.h"

namespace opc::zippackage::detail {
namespace {

bool isAscii(std::string_view text) {
  constexpr std::uint64_t kHighBits = 0x8080808080808080u;
  const char* next = text.data();
  std::size_t left = text.size();
  for (; left >= 8; left -= 8, next += 8) {
    if ((loadWord(next) & kHighBits) != 0) return false;
  }
  return (loadTail(next, left) & kHighBits) == 0;
}

// Whether a name is ASCII without a NUL and without two dots in a row, in one pass. False as well
// for a few that are: what follows a byte that is looked for can be mistaken for another one.
bool isPlain(std::string_view name) {
  constexpr std::uint64_t kEachByte = 0x0101010101010101u;
  constexpr std::uint64_t kHighBits = 0x80u * kEachByte;
  std::uint64_t dotBefore = 0;
  const auto isPlainWord = [&dotBefore](std::uint64_t word) {
    const std::uint64_t noDot = word ^ ('.' * kEachByte);
    const std::uint64_t dots = (noDot - kEachByte) & ~noDot & kHighBits;
    const std::uint64_t pairs = dots & (dots << 8 | dotBefore);
    dotBefore = dots >> 56;
    return (((word - kEachByte) | word) & kHighBits) == 0 && pairs == 0;
  };
  const char* next = name.data();
  std::size_t left = name.size();
  for (; left >= 8; left -= 8, next += 8) {
    if (!isPlainWord(loadWord(next))) return false;
  }
  if (left == 0) return true;
  return isPlainWord(loadTail(next, left) | 'a' * kEachByte << (8 * left));
}

// A file in whose record nothing is unusual, as in nearly all: what is checked one by one otherwise
// is checked here at once, and no field that any of the checks reads has a value that it notes.
bool isOrdinaryFile(const CentralHeader& header, Bytes extra) {
  constexpr std::uint32_t kRegularFile = 0x80000000;
  constexpr std::uint32_t kTypes = 0xF0000000 | kDosFolder | kDosLabel;
  const std::uint32_t type = header.externalAttributes & kTypes;
  const bool isFile = (type == 0 || type == kRegularFile) && header.madeBy >> 8 != kHostAmiga;
  const bool isPlainHeader =
      header.size != kZip64Sentinel32 && header.packedSize != kZip64Sentinel32 &&
      header.headerOffset != kZip64Sentinel32 && header.disk == 0 && header.commentLength == 0;
  const bool isReadable = (header.flags & (kAnyEncryption | kReservedFlags)) == 0 &&
                          isUsualVersion(header.versionNeeded) &&
                          (header.method == kDeflated ||
                           (header.method == kStored && header.size == header.packedSize));
  return isFile && isPlainHeader && isReadable && hasNoFieldOfWeight(extra);
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
  const auto expected = static_cast<std::size_t>(
      std::min<std::uint64_t>(directory_.location_.entries, bytes.size() / CentralHeader::kSize));
  directory_.entries_.reserve(expected);
  chains_.emplace(directory_, expected);
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
  ZipEntry& entry = directory_.entries_.emplace_back();
  entry.record = static_cast<std::uint32_t>(at);
  entry.headerOffset = header.headerOffset;
  entry.packedSize = header.packedSize;
  entry.size = header.size;
  entry.crc = header.crc;
  entry.nameLength = header.nameLength;
  entry.flags = header.flags;
  entry.method = header.method;
  const unsigned char* const nameStart = directory_.bytes_.data() + at + CentralHeader::kSize;
  const Bytes extra(nameStart + header.nameLength, header.extraLength);
  const std::string_view name(reinterpret_cast<const char*>(nameStart), header.nameLength);
  // What a name has in common with the one before has been looked at there.
  const std::size_t common = commonLength(nameBefore_, name);
  const std::size_t known = beforeIsPlain_ && common > 0 ? common - 1 : 0;
  beforeIsPlain_ = !name.empty() && name.back() != '/' && isPlain(name.substr(known));
  if (!beforeIsPlain_ || !isOrdinaryFile(header, extra)) checkEntry(entry, header);
  takeName(entry, name, common);
  nameBefore_ = name;
}

void DirectoryPass::checkEntry(ZipEntry& entry, const CentralHeader& header) {
  checkExtra();
  readZip64(entry, header);
  checkMethod(entry);
  checkName(entry);
  entry.kind = itemKindOf(directory_.name(current_), header);
  checkFields(entry, header);
  checkMarks(entry, header);
  checkDemands(header);
}

// Names are hashed only if need be, and then while they are in the cache.
void DirectoryPass::takeName(const ZipEntry& entry, std::string_view name, std::size_t common) {
  const bool isMapped = entry.mappedName != ZipEntry::kNotMapped;
  if (chains_ && !isMapped && chains_->add(current_, name, common)) return;
  if (chains_) {
    chains_.reset();
    hashes_.reserve(directory_.entries_.capacity());
  }
  for (auto next = static_cast<std::uint32_t>(hashes_.size()); next <= current_; ++next) {
    hashes_.push_back(keyedHash(directory_.name(next)));
  }
}

void DirectoryPass::checkExtra() {
  const ExtraFault fault = ExtraFieldWalk::faultOf(directory_.extra(current_));
  if (fault == ExtraFault::None) return;
  note(ZipFaultKind::ExtraMalformed, static_cast<std::uint64_t>(fault));
}

// Fields that are read by id; where the header needs none, as a rule.
void DirectoryPass::checkFields(const ZipEntry& entry, const CentralHeader& header) {
  const Bytes extra = directory_.extra(current_);
  if (extra.empty()) return;
  checkUnicodePath(entry, extra);
  const auto field = ExtraFieldWalk::find(extra, Zip64Extra::kId);
  const Zip64Extra actual{entry.size, entry.packedSize, entry.headerOffset, 0};
  if (!field) return;
  const Zip64Extra needed = Zip64Extra::neededBy(header);
  if (!actual.agrees(*field, needed)) note(ZipFaultKind::Zip64Unclear);
  // Some readers look for these fields only where they have seen the record.
  const auto isSmall = [](const auto& isNeeded, std::uint64_t value) {
    return isNeeded && value < kZip64Sentinel32;
  };
  const bool isNeedless = isSmall(needed.size, entry.size) ||
                          isSmall(needed.packedSize, entry.packedSize) ||
                          isSmall(needed.headerOffset, entry.headerOffset);
  if (isNeedless && !directory_.location_.isZip64) note(ZipFaultKind::Zip64Needless);
}

// A name of an old code page may have a field with the same name in Unicode. No other name needs
// one, and none that is ASCII.
void DirectoryPass::checkUnicodePath(const ZipEntry& entry, Bytes extra) {
  const auto path = otherUnicodePath(directory_.name(current_), extra);
  if (!path) return;
  const bool mayBeOld = entry.mappedName != ZipEntry::kNotMapped || !isAscii(*path);
  note(mayBeOld ? ZipFaultKind::UnicodePathOfOldName : ZipFaultKind::OtherUnicodePath);
}

void DirectoryPass::checkMarks(const ZipEntry& entry, const CentralHeader& header) {
  const std::string_view name = directory_.name(current_);
  MarkFault fault = markFaultOf(name, header);
  if (fault == MarkFault::None) fault = markFaultOfFields(name, directory_.extra(current_));
  const bool isFolder = name.ends_with('/') || fault == MarkFault::FolderWithoutSlash;
  if (isFolder && entry.size != 0) {
    note(ZipFaultKind::FolderHoldsData, entry.size);
  } else if (fault != MarkFault::None) {
    note(ZipFaultKind::MarksContradict, static_cast<std::uint64_t>(fault));
  }
}

void DirectoryPass::checkDemands(const CentralHeader& header) {
  const std::uint16_t version = header.versionNeeded;
  if (!isUsualVersion(version)) {
    const bool isHigh = !isUsualVersion(version & 0xFF);
    note(isHigh ? ZipFaultKind::VersionTooHigh : ZipFaultKind::VersionOdd, version);
  }
  if ((header.flags & kReservedFlags) != 0) note(ZipFaultKind::ReservedFlags, header.flags);
  if (findEndRecord(directory_.comment(current_)) == EndRecordTrace::Record) {
    note(ZipFaultKind::EndRecordInComment);
  }
}

void DirectoryPass::readZip64(ZipEntry& entry, const CentralHeader& header) {
  const bool isPlainHeader = header.size != kZip64Sentinel32 &&
                             header.packedSize != kZip64Sentinel32 &&
                             header.headerOffset != kZip64Sentinel32 && header.disk == 0;
  if (isPlainHeader) return;
  Zip64Extra wide = Zip64Extra::neededBy(header);
  const bool isNeeded = wide.size || wide.packedSize || wide.headerOffset || wide.disk;
  bool isThere = false;
  ExtraFieldWalk walk(directory_.extra(current_));
  while (!isThere && walk.next()) {
    if (walk.id() == Zip64Extra::kId) isThere = wide.decode(walk.data());
  }
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
  if (isPlain(name)) return;
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
  constexpr std::uint32_t kAhead = 16;
  if (chains_ && chains_->areDistinct()) return;
  for (auto next = hashes_.size(); next < directory_.entries_.size(); ++next) {
    hashes_.push_back(keyedHash(directory_.name(next)));
  }
  const auto nameOf = [this](std::uint32_t entry) { return directory_.name(entry); };
  const auto count = static_cast<std::uint32_t>(hashes_.size());
  HashIndex<std::uint32_t> names;
  names.reserve(count);
  for (std::uint32_t entry = 0; entry < count; ++entry) {
    if (count - entry > kAhead) names.prefetch(hashes_[entry + kAhead]);
    const auto isSame = [&](std::uint32_t other) { return nameOf(other) == nameOf(entry); };
    const std::uint32_t* other = names.findOrInsert(hashes_[entry], entry, isSame);
    if (other != nullptr) noteTwice(entry, *other);
  }
}

void DirectoryPass::noteTwice(std::uint32_t entry, std::uint32_t other) {
  const bool isFolder = directory_.name(entry).ends_with('/');
  noteFor(entry, isFolder ? ZipFaultKind::DuplicateFolder : ZipFaultKind::DuplicateName, other, 0);
}

// Sorted by where they begin, entries that share bytes are neighbours, or follow one that reaches
// over its neighbours: hence the one that ends last so far.
void DirectoryPass::checkPlaces() {
  const auto& entries = directory_.entries_;
  auto& order = directory_.physicalOrder_;
  order.resize(entries.size());
  std::iota(order.begin(), order.end(), 0u);
  const auto isBefore = [](const ZipEntry& a, const ZipEntry& b) {
    return a.headerOffset < b.headerOffset;
  };
  if (!std::is_sorted(entries.begin(), entries.end(), isBefore)) {
    std::sort(order.begin(), order.end(),
              [&](std::uint32_t a, std::uint32_t b) { return isBefore(entries[a], entries[b]); });
  }
  const std::uint64_t start =
      order.empty() ? directory_.location_.offset : entries[order[0]].headerOffset;
  if (start > 0) note(ZipFaultKind::BytesBeforeFirst, 0, start);
  for (const std::uint32_t entry : order) {
    if (!followsClosely(entries[entry])) checkPlace(entry, entries[entry].leastEnd());
  }
  if (farthest_ == kNoEntry) return;
  const std::uint64_t gap =
      directory_.location_.offset - std::min(reached_, directory_.location_.offset);
  if (gap > kMaxUnseen) note(ZipFaultKind::UnusedBytes, reached_, gap);
}

// Whether an item lies right after those before it, and ends before the directory.
bool DirectoryPass::followsClosely(const ZipEntry& entry) {
  const std::uint64_t limit = directory_.location_.offset;
  const std::uint64_t start = entry.headerOffset;
  const bool isBehind = farthest_ != kNoEntry && start >= reached_ &&
                        start - reached_ <= kMaxUnseen && start <= limit;
  const std::uint64_t head = LocalHeader::kSize + std::uint64_t{entry.nameLength};
  const std::uint64_t room = isBehind ? limit - start : 0;
  if (room < head || room - head < entry.packedSize) return false;
  farthest_ = static_cast<std::uint32_t>(&entry - directory_.entries_.data());
  reached_ = start + head + entry.packedSize;
  return true;
}

void DirectoryPass::checkPlace(std::uint32_t entry, std::uint64_t end) {
  const std::uint64_t start = directory_.entries_[entry].headerOffset;
  const std::uint64_t archiveEnd = directory_.location_.archiveEnd;
  if (start >= archiveEnd || end > archiveEnd) {
    noteFor(entry, ZipFaultKind::OutsideFile, end, archiveEnd);
  } else if (end > directory_.location_.offset) {
    noteFor(entry, ZipFaultKind::Overlap, kNoEntry, 0);
  }
  if (farthest_ != kNoEntry && reached_ > start) {
    noteFor(entry, ZipFaultKind::Overlap, farthest_, 0);
  } else if (farthest_ != kNoEntry && start - reached_ > kMaxUnseen) {
    noteFor(kNoEntry, ZipFaultKind::UnusedBytes, reached_, start - reached_);
  }
  if (farthest_ != kNoEntry && end <= reached_) return;
  farthest_ = entry;
  reached_ = end;
}

void DirectoryPass::note(ZipFaultKind kind, std::uint64_t first, std::uint64_t second) {
  noteFor(current_, kind, first, second);
}

void DirectoryPass::noteFor(std::uint32_t entry, ZipFaultKind kind, std::uint64_t first,
                            std::uint64_t second) {
  directory_.location_.faults.push_back({kind, entry, first, second});
}

}  // namespace opc::zippackage::detail
