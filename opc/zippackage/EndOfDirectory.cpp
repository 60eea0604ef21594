// SPDX-License-Identifier: MIT
#include "opc/zippackage/EndOfDirectory.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <utility>

#include "opc/Exception.h"
#include "opc/zippackage/HeaderMarks.h"
#include "opc/zippackage/ZipFormat.h"

namespace opc::zippackage {
namespace {

/// As many as a tail of kSize has room for. A look at one may take a few reads of the file.
constexpr std::size_t kMaxCandidates = FileTail::kSize / 4;

/// How well a candidate fits, ascending.
enum class Fit { Cut, Misplaced, Gap, Exact };

/// Something that begins like an end record.
struct Candidate {
  std::uint64_t offset = 0;
  EndRecord record;
  DirectoryLocation location;
  Fit fit = Fit::Cut;
  const char* rule = "ZP-16";
  std::string problem;  ///< why it does not fit

  bool isPlausible() const { return fit >= Fit::Gap; }
};

class EndRecordSearch {
 public:
  explicit EndRecordSearch(const FileTail& tail) : tail_(tail), size_(tail.file().size()) {}

  DirectoryLocation run();

 private:
  void considerAll();
  void consider(std::uint64_t offset);
  void prefer(Candidate&& candidate);
  Candidate evaluate(std::uint64_t offset) const;
  bool couldBeTaken(const Candidate& candidate) const;
  void noteEarlierRecords();
  std::optional<Zip64Locator> locatorBefore(std::uint64_t offset) const;
  std::optional<Zip64EndRecord> wideRecordAt(std::uint64_t offset, std::uint64_t limit) const;
  bool hasWideRecord(std::uint64_t offset) const;
  bool readZip64(Candidate& candidate) const;
  bool applyZip64(Candidate& candidate, const Zip64Locator& locator) const;
  void judgePlace(Candidate& candidate) const;
  bool beginsWith(std::uint64_t offset, std::uint32_t signature) const;
  [[noreturn]] void refuseWithoutRecord() const;

  const FileTail& tail_;
  std::uint64_t size_;
  std::optional<Candidate> best_;
  std::optional<std::uint64_t> lastToBeTaken_;  ///< offset of the last one that a reader may take
  std::vector<std::pair<std::uint64_t, std::uint64_t>> plausible_;  ///< offset, end of comment
  std::optional<std::uint64_t> firstWithDirectory_;  ///< its directory is where it says
  std::optional<std::uint64_t> firstEmpty_;          ///< it needs none
};

std::uint64_t saturatedSum(std::uint64_t a, std::uint64_t b) {
  return a > UINT64_MAX - b ? UINT64_MAX : a + b;
}

DirectoryLocation fromEndRecord(std::uint64_t offset, const EndRecord& record) {
  DirectoryLocation location;
  location.offset = record.directoryOffset;
  location.size = record.directorySize;
  location.entries = record.entries;
  location.endRecords = offset;
  location.archiveEnd = offset + EndRecord::kSize + record.commentLength;
  return location;
}

void noteVolumes(Candidate& candidate, bool isOne) {
  if (!isOne) candidate.location.faults.push_back({ZipFaultKind::OtherVolume});
}

bool isOneVolume(const EndRecord& record, bool hasZip64) {
  const auto isFirst = [hasZip64](std::uint16_t disk) {
    return disk == 0 || (hasZip64 && disk == kZip64Sentinel16);
  };
  return isFirst(record.disk) && isFirst(record.directoryDisk) &&
         record.entriesHere == record.entries;
}

bool agrees(const EndRecord& record, const Zip64EndRecord& wide) {
  const auto same32 = [](std::uint32_t narrow, std::uint64_t value) {
    return narrow == kZip64Sentinel32 || narrow == value;
  };
  const bool sameCount = record.entries == kZip64Sentinel16 || record.entries == wide.entries;
  return sameCount && same32(record.directorySize, wide.directorySize) &&
         same32(record.directoryOffset, wide.directoryOffset);
}

/// Offset of the last signature of an end record that ends before `before`.
std::optional<std::uint64_t> lastSignature(const FileTail& tail, std::uint64_t before) {
  constexpr unsigned char kText[4] = {'P', 'K', 5, 6};
  const unsigned char* first = tail.at(tail.start());
  std::size_t size = before - tail.start();
  while (size >= sizeof kText) {
    // Few bytes are that letter, and memrchr() looks at many at once.
    const auto* found =
        static_cast<const unsigned char*>(::memrchr(first, kText[0], size - (sizeof kText - 1)));
    if (found == nullptr) break;
    const auto offset = static_cast<std::size_t>(found - first);
    if (std::equal(std::begin(kText), std::end(kText), found)) return tail.start() + offset;
    size = offset + sizeof kText - 1;
  }
  return std::nullopt;
}

// Some readers compare the end records that they find, and take the one whose directory agrees best
// with the local headers. Archives that are packed in this one do not count their offsets from its
// beginning, so that theirs lead nowhere.
void EndRecordSearch::noteEarlierRecords() {
  DirectoryLocation& location = best_->location;
  if (firstWithDirectory_ < best_->offset) {
    location.faults.push_back({ZipFaultKind::EarlierDirectory, kNoEntry, *firstWithDirectory_});
  }
  location.hasEarlierRecord = firstEmpty_ && *firstEmpty_ < best_->offset;
}

DirectoryLocation EndRecordSearch::run() {
  considerAll();
  // What turns up far in front of the end and does not fit is of a package within the package.
  if (!best_ || (tail_.isLong() && !best_->isPlausible())) refuseWithoutRecord();
  if (!best_->isPlausible()) throw FormatError(best_->rule, best_->problem);
  const bool isHidden =
      std::any_of(plausible_.begin(), plausible_.end(), [this](const auto& other) {
        return other.first < best_->offset && other.second > best_->offset;
      });
  if (isHidden) {
    throw FormatError("ZP-16", "it has two end records, one in the comment of the other");
  }
  if (lastToBeTaken_ > best_->offset) {
    throw FormatError("ZP-16", "it has two end records, one after the other at offset " +
                                   std::to_string(*lastToBeTaken_));
  }
  const std::uint64_t end = best_->location.archiveEnd;
  if (end < size_) {
    best_->location.faults.push_back({ZipFaultKind::BytesAfterEnd, kNoEntry, end, size_ - end});
  }
  noteEarlierRecords();
  const unsigned char* comment = tail_.at(best_->offset + EndRecord::kSize);
  best_->location.comment.assign(comment, comment + best_->record.commentLength);
  if (findEndRecord(best_->location.comment) == EndRecordTrace::Record) {
    best_->location.faults.push_back({ZipFaultKind::EndRecordInComment});
  }
  return std::move(best_->location);
}

void EndRecordSearch::considerAll() {
  std::uint64_t before = size_;
  std::size_t count = 0;
  while (const auto offset = lastSignature(tail_, before)) {
    if (++count > kMaxCandidates) {
      throw FormatError("ZP-16", "more than " + std::to_string(kMaxCandidates) +
                                     " places in it look like its end record");
    }
    consider(*offset);
    before = *offset + 3;  // The next one may end within this one's signature, not later.
  }
}

void EndRecordSearch::consider(std::uint64_t offset) {
  Candidate candidate = evaluate(offset);
  if (candidate.isPlausible()) plausible_.emplace_back(offset, candidate.location.archiveEnd);
  if (!lastToBeTaken_ && couldBeTaken(candidate)) lastToBeTaken_ = offset;
  const auto locator = locatorBefore(offset);
  if (candidate.isPlausible() || (locator && wideRecordAt(locator->recordOffset, offset)) ||
      beginsWith(candidate.record.directoryOffset, CentralHeader::kSignature)) {
    firstWithDirectory_ = offset;
  } else if (candidate.record.entries == 0) {
    firstEmpty_ = offset;
  }
  prefer(std::move(candidate));
}

// Candidates come from the last to the first, so an equal one does not replace a later one.
void EndRecordSearch::prefer(Candidate&& candidate) {
  const auto rank = [this](const Candidate& one) {
    return std::pair(one.fit, one.location.archiveEnd == size_);
  };
  if (!best_ || rank(*best_) < rank(candidate)) best_ = std::move(candidate);
}

// Some readers take the last record whatever its comment length says, and its directory to be
// directly in front of it wherever it says; one without entries needs none at all.
bool EndRecordSearch::couldBeTaken(const Candidate& candidate) const {
  if (candidate.isPlausible()) return true;
  if (size_ - candidate.offset < EndRecord::kSize) return false;
  const std::uint64_t size = candidate.record.directorySize;
  if (size == 0 || locatorBefore(candidate.offset)) return true;
  const bool isInFront =
      size <= candidate.offset && beginsWith(candidate.offset - size, CentralHeader::kSignature);
  return isInFront || beginsWith(candidate.record.directoryOffset, CentralHeader::kSignature);
}

Candidate EndRecordSearch::evaluate(std::uint64_t offset) const {
  Candidate candidate;
  candidate.offset = offset;
  const auto record =
      EndRecord::decode(Bytes(tail_.at(offset), static_cast<std::size_t>(size_ - offset)));
  if (!record) {
    candidate.problem = "it is truncated within its end record";
    return candidate;
  }
  candidate.record = *record;
  candidate.location = fromEndRecord(offset, *record);
  if (candidate.location.archiveEnd > size_) {
    candidate.problem = "it is truncated within its comment";
    return candidate;
  }
  candidate.fit = Fit::Misplaced;
  if (readZip64(candidate)) judgePlace(candidate);
  return candidate;
}

std::optional<Zip64Locator> EndRecordSearch::locatorBefore(std::uint64_t offset) const {
  if (offset < Zip64Locator::kSize) return std::nullopt;
  unsigned char bytes[Zip64Locator::kSize];
  tail_.readAt(offset - sizeof bytes, bytes, sizeof bytes);
  return Zip64Locator::decode(bytes);
}

std::optional<Zip64EndRecord> EndRecordSearch::wideRecordAt(std::uint64_t offset,
                                                            std::uint64_t limit) const {
  if (offset > limit || limit - offset < Zip64EndRecord::kSize) return std::nullopt;
  unsigned char bytes[Zip64EndRecord::kSize];
  tail_.readAt(offset, bytes, sizeof bytes);
  return Zip64EndRecord::decode(bytes);
}

// Where the locator says, or where readers look that do not ask it.
bool EndRecordSearch::hasWideRecord(std::uint64_t offset) const {
  const auto locator = locatorBefore(offset);
  if (!locator) return false;
  const std::uint64_t limit = offset - Zip64Locator::kSize;
  const bool isInFront =
      limit >= Zip64EndRecord::kSize && wideRecordAt(limit - Zip64EndRecord::kSize, limit);
  return isInFront || wideRecordAt(locator->recordOffset, limit);
}

// False when the candidate needs ZIP64 records that are not there or not right.
bool EndRecordSearch::readZip64(Candidate& candidate) const {
  const EndRecord& record = candidate.record;
  const bool sizesElsewhere =
      record.directorySize == kZip64Sentinel32 || record.directoryOffset == kZip64Sentinel32;
  const bool isElsewhere = sizesElsewhere || record.entries == kZip64Sentinel16 ||
                           record.disk == kZip64Sentinel16 ||
                           record.directoryDisk == kZip64Sentinel16;
  // What looks like a locator may be the end of the last entry's comment.
  const DirectoryLocation& location = candidate.location;
  const bool reachesDirectory =
      !isElsewhere && saturatedSum(location.offset, location.size) == candidate.offset;
  if (reachesDirectory && hasWideRecord(candidate.offset)) {
    candidate.problem = "it has two end records, a ZIP64 one in the comment of its last item";
    return false;
  }
  const auto locator = locatorBefore(candidate.offset);
  if (!reachesDirectory && locator) return applyZip64(candidate, *locator);
  noteVolumes(candidate, isOneVolume(record, false));
  if (!sizesElsewhere) return true;  // 65,535 entries need no ZIP64 record, they fit the field.
  candidate.rule = "ZP-9";
  candidate.problem = "its end record refers to a ZIP64 end record, which is not there";
  return false;
}

bool EndRecordSearch::applyZip64(Candidate& candidate, const Zip64Locator& locator) const {
  candidate.rule = "ZP-9";
  const std::uint64_t room = candidate.offset - Zip64Locator::kSize;
  const std::uint64_t at = locator.recordOffset;
  const auto wide = wideRecordAt(at, room);
  if (!wide) {
    candidate.problem = "its ZIP64 end record is not at offset " + std::to_string(at);
    return false;
  }
  // Some readers look there whatever the locator says.
  const std::uint64_t inFront = room - Zip64EndRecord::kSize;
  if (inFront != at && wideRecordAt(inFront, room)) {
    candidate.problem = "it has two ZIP64 end records";
    return false;
  }
  const std::uint64_t space = room - at - Zip64EndRecord::kUncounted;
  constexpr std::uint64_t kMinSize = Zip64EndRecord::kSize - Zip64EndRecord::kUncounted;
  if (wide->recordSize < kMinSize || wide->recordSize > space) {
    candidate.problem =
        "its ZIP64 end record declares a size of " + std::to_string(wide->recordSize);
    return false;
  }
  // Only the second version of the record, which describes such a directory, is longer.
  if (wide->recordSize > kMinSize && (wide->versionNeeded & 0xFF) >= 62) {
    candidate.rule = "ZP-6";
    candidate.problem = "its directory is compressed or encrypted";
    return false;
  }
  noteVolumes(candidate, isOneVolume(candidate.record, true) && locator.recordDisk == 0 &&
                             locator.disks == 1 && wide->disk == 0 && wide->directoryDisk == 0 &&
                             wide->entriesHere == wide->entries);
  if (!agrees(candidate.record, *wide)) {
    candidate.location.faults.push_back({ZipFaultKind::EndRecordsDiffer});
  }
  if (wide->recordSize < space) {
    const std::uint64_t end = at + Zip64EndRecord::kUncounted + wide->recordSize;
    candidate.location.faults.push_back({ZipFaultKind::UnusedBytes, kNoEntry, end, room - end});
  }
  candidate.location.offset = wide->directoryOffset;
  candidate.location.size = wide->directorySize;
  candidate.location.entries = wide->entries;
  candidate.location.endRecords = at;
  candidate.location.isZip64 = true;
  return true;
}

void EndRecordSearch::judgePlace(Candidate& candidate) const {
  DirectoryLocation& location = candidate.location;
  const std::uint64_t end = saturatedSum(location.offset, location.size);
  const std::uint64_t limit = location.endRecords;
  // An empty directory has no first entry to know it by: it has to end where it should.
  const auto isThere = [&](std::uint64_t offset) {
    return location.size == 0 ? offset == limit : beginsWith(offset, CentralHeader::kSignature);
  };
  candidate.rule = "ZP-16";
  const bool isSecondInFront = end < limit && location.size > 0 &&
                               beginsWith(limit - location.size, CentralHeader::kSignature);
  if (isSecondInFront && isThere(location.offset)) {
    // Some readers take the one that it names, others the one directly in front of it.
    candidate.problem = "it has two directories";
  } else if (end <= limit && isThere(location.offset)) {
    candidate.fit = end == limit ? Fit::Exact : Fit::Gap;
    if (end == limit) return;
    location.faults.push_back({ZipFaultKind::UnusedBytes, kNoEntry, end, limit - end});
  } else if (!location.faults.empty() &&
             location.faults.front().kind == ZipFaultKind::OtherVolume) {
    candidate.rule = "ZP-14";
    candidate.problem = "it is one volume of an archive of several";
  } else if (end < limit && isThere(limit - location.size)) {
    candidate.problem =
        "its offsets do not count the " + std::to_string(limit - end) + " bytes in front of it";
  } else if (end > limit) {
    candidate.problem = "its directory (offset " + std::to_string(location.offset) + ", size " +
                        std::to_string(location.size) + ") leaves the file";
  } else {
    candidate.problem = "its directory is not at offset " + std::to_string(location.offset);
    const std::uint32_t kArchiveExtraData = 0x08064b50;
    if (beginsWith(location.offset, kArchiveExtraData)) {
      candidate.rule = "ZP-6";
      candidate.problem = "its directory is encrypted";
    }
  }
}

bool EndRecordSearch::beginsWith(std::uint64_t offset, std::uint32_t signature) const {
  unsigned char bytes[4];
  if (size_ < sizeof bytes || offset > size_ - sizeof bytes) return false;
  tail_.readAt(offset, bytes, sizeof bytes);
  return load32(bytes) == signature;
}

void EndRecordSearch::refuseWithoutRecord() const {
  if (size_ == 0) throw FormatError("ZP-16", "it is empty");
  if (!beginsWith(0, LocalHeader::kSignature)) {
    throw FormatError("ZP-16", "not a ZIP file (no end record)");
  }
  if (tail_.start() == 0) throw FormatError("ZP-16", "it is truncated (no end record)");
  throw FormatError("ZP-16", "it is truncated, or more than " +
                                 std::to_string(FileTail::kLongSize >> 20) +
                                 " MiB follow its end (no end record)");
}

}  // namespace

void FileTail::hold(std::size_t atMost) {
  const std::uint64_t size = std::min<std::uint64_t>(file_.size(), atMost);
  start_ = file_.size() - size;
  bytes_.resizeForOverwrite(static_cast<std::size_t>(size));
  file_.readAt(start_, bytes_.data(), bytes_.size());
}

void FileTail::readAt(std::uint64_t offset, unsigned char* into, std::size_t size) const {
  const std::uint64_t end = start_ + bytes_.size();
  const bool isHeld = offset >= start_ && offset <= end && size <= end - offset;
  if (!isHeld) return file_.readAt(offset, into, size);
  std::copy_n(at(offset), size, into);
}

DirectoryLocation findDirectory(FileTail& tail) {
  if (tail.start() > 0 && !lastSignature(tail, tail.file().size())) tail.lengthen();
  return EndRecordSearch(tail).run();
}

}  // namespace opc::zippackage
