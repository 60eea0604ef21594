// SPDX-License-Identifier: MIT
#include "opc/zippackage/ZipItemReader.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/zippackage/ExtraFields.h"
#include "opc/zippackage/detail/ZipItemStream.h"

namespace opc::zippackage {
namespace {

/// An item held in memory.
class WholeItemStream final : public InputStream {
 public:
  explicit WholeItemStream(ByteBuffer content)
      : content_(std::move(content)), stream_(content_.data(), content_.size()) {}
  std::size_t read(unsigned char* buffer, std::size_t size) override {
    return stream_.read(buffer, size);
  }
  bool isEnd() override { return stream_.isEnd(); }

 private:
  ByteBuffer content_;
  MemoryInputStream stream_;
};

bool sameByte(char a, unsigned char b) {
  return static_cast<unsigned char>(a) == b;
}

void requirePlausible(const ZipEntry& item) {
  if (item.method != kDeflated || isPlausible(item.packedSize, item.size)) return;
  throw FormatError("ZP-15", "its declared size is more than its data can unpack to",
                    ErrorCode::Damaged);
}

[[noreturn]] void refuseHeader(const char* why) {
  throw FormatError("ZP-7", why);
}

/// What a local header says, ZIP64 values in place.
struct LocalSizes {
  std::uint64_t packedSize = 0;
  std::uint64_t size = 0;
  bool hasZip64 = false;
};

LocalSizes readSizes(const LocalHeader& header, Bytes extra) {
  LocalSizes sizes{header.packedSize, header.size};
  Zip64Extra wide = Zip64Extra::neededBy(header);
  const auto field = ExtraFieldWalk::find(extra, Zip64Extra::kId);
  sizes.hasZip64 = field.has_value();
  if (!wide.size && !wide.packedSize) return sizes;
  if (!field || !wide.decode(*field)) {
    // With a descriptor to follow, the values need not be known yet.
    if ((header.flags & kFlagDescriptor) != 0) return sizes;
    throw FormatError("ZP-9", "its local header refers to a ZIP64 value that it does not have");
  }
  sizes.size = wide.size.value_or(sizes.size);
  sizes.packedSize = wide.packedSize.value_or(sizes.packedSize);
  return sizes;
}

void checkHeader(const LocalHeader& header, const ZipEntry& entry, const LocalSizes& sizes) {
  if (header.method != entry.method) {
    refuseHeader("its local header names another method than the directory");
  }
  if ((header.flags & kAnyEncryption) != 0) {
    refuseHeader("its local header says that it is encrypted, the directory does not");
  }
  const bool mayBeUnset = (header.flags & kFlagDescriptor) != 0;
  const auto agrees = [mayBeUnset](std::uint64_t here, std::uint64_t there) {
    return here == there || (mayBeUnset && (here == 0 || here == kZip64Sentinel32));
  };
  if (!agrees(header.crc, entry.crc)) {
    refuseHeader("its local header has another checksum than the directory");
  }
  if (!agrees(sizes.packedSize, entry.packedSize) || !agrees(sizes.size, entry.size)) {
    refuseHeader("its local header has other sizes than the directory");
  }
}

}  // namespace

ZipItemReader::ZipItemReader(const PackageFile& file, const ZipDirectory& directory)
    : file_(file), directory_(directory), window_(file) {}

void ZipItemReader::read(std::size_t entry, ByteBuffer& into, std::uint64_t limit) {
  const ZipEntry& item = directory_.entries()[entry];
  if (item.size > limit) {
    throw Exception(ErrorCode::TooLarge, "its size of " + std::to_string(item.size) +
                                             " bytes is over the limit of " +
                                             std::to_string(limit));
  }
  requirePlausible(item);
  if (item.packedSize <= kWholeLimit) return readWhole(entry, into);
  const std::unique_ptr<InputStream> stream = openStream(entry);
  into.resizeForOverwrite(static_cast<std::size_t>(item.size));
  for (std::size_t done = 0; done < into.size();) {
    done += stream->read(into.data() + done, into.size() - done);
  }
}

std::unique_ptr<InputStream> ZipItemReader::open(std::size_t entry) {
  const ZipEntry& item = directory_.entries()[entry];
  requirePlausible(item);
  if (item.size > kWholeLimit || item.packedSize > kWholeLimit) return openStream(entry);
  ByteBuffer content;
  readWhole(entry, content);
  return std::make_unique<WholeItemStream>(std::move(content));
}

Bytes ZipItemReader::packedBytes(std::size_t entry, std::uint64_t offset, std::size_t size) {
  const ZipEntry& item = directory_.entries()[entry];
  requirePlausible(item);
  const std::uint64_t packedSize = item.packedSize;
  if (offset >= packedSize) return {};
  const Place place = locate(entry, packedSize <= size);
  const std::uint64_t left = packedSize - offset;
  return window_.at(place.data + offset,
                    static_cast<std::size_t>(std::min<std::uint64_t>(size, left)));
}

std::uint64_t ZipItemReader::endOf(std::size_t entry) {
  return locate(entry, false).end;
}

Bytes ZipItemReader::localExtra(std::size_t entry) {
  const LocalHeader header = readHeader(entry, 0);
  const std::uint64_t headerOffset = directory_.entries()[entry].headerOffset;
  return window_.at(headerOffset + LocalHeader::kSize + header.nameLength, header.extraLength);
}

void ZipItemReader::readWhole(std::size_t entry, ByteBuffer& into) {
  const ZipEntry& item = directory_.entries()[entry];
  const Place place = locate(entry, true);
  const Bytes packed = window_.at(place.data, static_cast<std::size_t>(item.packedSize));
  // An empty item that is said to be deflated, without the stream that this would take.
  const bool isNothing = item.size == 0 && packed.empty();
  into.resizeForOverwrite(static_cast<std::size_t>(item.size));
  if (item.method == kDeflated && !isNothing) {
    inflater_.unpack(packed, into.data(), into.size());
  } else if (!packed.empty()) {
    std::memcpy(into.data(), packed.data(), packed.size());
  }
  if (updateCrc(0, into.bytes()) != item.crc) {
    throw FormatError("ZP-15", "the checksum is wrong", ErrorCode::Damaged);
  }
}

std::unique_ptr<InputStream> ZipItemReader::openStream(std::size_t entry) {
  const ZipEntry& item = directory_.entries()[entry];
  const Place place = locate(entry, false);
  auto stream = std::make_unique<detail::ZipItemStream>(file_, item, place.data);
  if (item.size == 0) stream->checkEnd();
  return stream;
}

// With the data, header and data come in one read as a rule: the local extra fields are seldom
// longer than the directory's.
ZipItemReader::Place ZipItemReader::locate(std::size_t entry, bool withData) {
  const ZipEntry& item = directory_.entries()[entry];
  const LocalHeader header = readHeader(entry, withData ? item.packedSize : 0);
  const std::uint64_t limit = directory_.limitOf(entry);
  const std::uint64_t extraAt = item.headerOffset + LocalHeader::kSize + header.nameLength;
  Place place;
  place.data = extraAt + header.extraLength;
  if (place.data > limit || item.packedSize > limit - place.data) refuseOverlap(entry);
  const LocalSizes sizes = readSizes(header, window_.at(extraAt, header.extraLength));
  checkHeader(header, item, sizes);
  place.end = place.data + item.packedSize;
  if ((header.flags & kFlagDescriptor) != 0) {
    // From the start of the data, when they are wanted, so that the window moves only once.
    const std::uint64_t from = withData ? place.data : place.end;
    place.end += descriptorLength(entry, from, place.end, sizes.hasZip64);
    if (place.end > limit) refuseOverlap(entry);
  }
  return place;
}

LocalHeader ZipItemReader::localHeader(std::size_t entry) {
  return readHeader(entry, 0);
}

LocalHeader ZipItemReader::readHeader(std::size_t entry, std::uint64_t dataSize) {
  const ZipEntry& item = directory_.entries()[entry];
  const std::string_view name = directory_.storedName(entry);
  const std::uint64_t guess = LocalHeader::kSize + name.size() + directory_.extra(entry).size() +
                              dataSize + DataDescriptor::kMaxSize;
  const std::uint64_t room = directory_.location().offset - item.headerOffset;
  const Bytes start =
      window_.at(item.headerOffset, static_cast<std::size_t>(std::min(guess, room)));
  const auto header = LocalHeader::decode(start);
  if (!header) refuseHeader("there is no local header where the directory says");
  if (header->nameLength != name.size() ||
      !std::equal(name.begin(), name.end(), start.begin() + LocalHeader::kSize, sameByte)) {
    refuseHeader("its local header has another name than the directory");
  }
  const bool isMarkedOnce = ((header->flags ^ item.flags) & kFlagUtf8) != 0;
  if (isMarkedOnce && !isAscii(name)) {
    refuseHeader("only one of its headers marks its name as UTF-8");
  }
  return *header;
}

// Neither the extra fields of the local header nor the descriptor show in the directory.
void ZipItemReader::refuseOverlap(std::size_t entry) const {
  const std::uint32_t next = directory_.follower(entry);
  if (next == kNoEntry) throw FormatError("RB-2", "its data reach into the directory");
  throw FormatError("RB-2",
                    "its data reach into item '" + std::string(directory_.name(next)) + "'");
}

std::size_t ZipItemReader::descriptorLength(std::size_t entry, std::uint64_t from,
                                            std::uint64_t dataEnd, bool wideFirst) {
  const ZipEntry& item = directory_.entries()[entry];
  const std::uint64_t room = directory_.location().offset - dataEnd;
  const std::uint64_t length = std::min<std::uint64_t>(room, DataDescriptor::kMaxSize);
  const auto before = static_cast<std::size_t>(dataEnd - from);
  const Bytes descriptor =
      window_.at(from, before + static_cast<std::size_t>(length)).subspan(before);
  const std::size_t found = DataDescriptor{item.crc, item.packedSize, item.size}.lengthIn(
      descriptor, wideFirst, directory_.limitOf(entry) - dataEnd);
  if (found == 0) {
    throw FormatError("ZP-8", "its data descriptor is missing or differs from the directory");
  }
  return found;
}

}  // namespace opc::zippackage
