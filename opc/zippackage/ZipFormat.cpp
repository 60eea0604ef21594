// SPDX-License-Identifier: MIT
#include "opc/zippackage/ZipFormat.h"

#include <algorithm>

namespace opc::zippackage {
namespace {

/// Field after field, in the order of the record.
class FieldWriter {
 public:
  explicit FieldWriter(unsigned char* to) : next_(to) {}
  FieldWriter& u16(std::uint16_t value) {
    store16(next_, value);
    next_ += 2;
    return *this;
  }
  FieldWriter& u32(std::uint32_t value) {
    store32(next_, value);
    next_ += 4;
    return *this;
  }
  FieldWriter& u64(std::uint64_t value) {
    store64(next_, value);
    next_ += 8;
    return *this;
  }
  const unsigned char* next() const { return next_; }

 private:
  unsigned char* next_;
};

class FieldReader {
 public:
  explicit FieldReader(const unsigned char* from) : next_(from) {}
  FieldReader& u16(std::uint16_t& value) {
    value = load16(next_);
    next_ += 2;
    return *this;
  }
  FieldReader& u32(std::uint32_t& value) {
    value = load32(next_);
    next_ += 4;
    return *this;
  }
  FieldReader& u64(std::uint64_t& value) {
    value = load64(next_);
    next_ += 8;
    return *this;
  }

 private:
  const unsigned char* next_;
};

template <typename Record>
bool isHere(Bytes from) {
  return from.size() >= Record::kSize && load32(from.data()) == Record::kSignature;
}

}  // namespace

void LocalHeader::encode(unsigned char* to) const {
  FieldWriter(to)
      .u32(kSignature)
      .u16(versionNeeded)
      .u16(flags)
      .u16(method)
      .u32(dosTime)
      .u32(crc)
      .u32(packedSize)
      .u32(size)
      .u16(nameLength)
      .u16(extraLength);
}

// The result is filled in place: 16-bit stores that are copied in wider pieces right after make the
// processor wait, and this is where a large directory spends its time.
std::optional<LocalHeader> LocalHeader::decode(Bytes from) {
  std::optional<LocalHeader> header;
  if (!isHere<LocalHeader>(from)) return header;
  header.emplace();
  FieldReader(from.data() + 4)
      .u16(header->versionNeeded)
      .u16(header->flags)
      .u16(header->method)
      .u32(header->dosTime)
      .u32(header->crc)
      .u32(header->packedSize)
      .u32(header->size)
      .u16(header->nameLength)
      .u16(header->extraLength);
  return header;
}

void CentralHeader::encode(unsigned char* to) const {
  FieldWriter(to)
      .u32(kSignature)
      .u16(madeBy)
      .u16(versionNeeded)
      .u16(flags)
      .u16(method)
      .u32(dosTime)
      .u32(crc)
      .u32(packedSize)
      .u32(size)
      .u16(nameLength)
      .u16(extraLength)
      .u16(commentLength)
      .u16(disk)
      .u16(internalAttributes)
      .u32(externalAttributes)
      .u32(headerOffset);
}

std::optional<CentralHeader> CentralHeader::decode(Bytes from) {
  std::optional<CentralHeader> header;
  if (!isHere<CentralHeader>(from)) return header;
  header.emplace();
  FieldReader(from.data() + 4)
      .u16(header->madeBy)
      .u16(header->versionNeeded)
      .u16(header->flags)
      .u16(header->method)
      .u32(header->dosTime)
      .u32(header->crc)
      .u32(header->packedSize)
      .u32(header->size)
      .u16(header->nameLength)
      .u16(header->extraLength)
      .u16(header->commentLength)
      .u16(header->disk)
      .u16(header->internalAttributes)
      .u32(header->externalAttributes)
      .u32(header->headerOffset);
  return header;
}

std::size_t DataDescriptor::encode(unsigned char* to, bool wide, bool withSignature) const {
  FieldWriter writer(to);
  if (withSignature) writer.u32(kSignature);
  writer.u32(crc);
  if (wide) {
    writer.u64(packedSize).u64(size);
  } else {
    writer.u32(static_cast<std::uint32_t>(packedSize)).u32(static_cast<std::uint32_t>(size));
  }
  return static_cast<std::size_t>(writer.next() - to);
}

std::size_t DataDescriptor::lengthIn(Bytes from, bool wideFirst, std::uint64_t room) const {
  std::size_t first = 0;
  const bool fitsNarrow = packedSize <= kElsewhere32 && size <= kElsewhere32;
  for (const bool wide : {wideFirst, !wideFirst}) {
    if (!wide && !fitsNarrow) continue;
    for (const bool withSignature : {true, false}) {
      unsigned char expected[kMaxSize];
      const Bytes form(expected, encode(expected, wide, withSignature));
      if (from.size() < form.size()) continue;
      if (!std::equal(form.begin(), form.end(), from.begin())) continue;
      if (form.size() == room) return form.size();
      if (first == 0) first = form.size();
    }
  }
  return first;
}

void EndRecord::encode(unsigned char* to) const {
  FieldWriter(to)
      .u32(kSignature)
      .u16(disk)
      .u16(directoryDisk)
      .u16(entriesHere)
      .u16(entries)
      .u32(directorySize)
      .u32(directoryOffset)
      .u16(commentLength);
}

std::optional<EndRecord> EndRecord::decode(Bytes from) {
  std::optional<EndRecord> record;
  if (!isHere<EndRecord>(from)) return record;
  record.emplace();
  FieldReader(from.data() + 4)
      .u16(record->disk)
      .u16(record->directoryDisk)
      .u16(record->entriesHere)
      .u16(record->entries)
      .u32(record->directorySize)
      .u32(record->directoryOffset)
      .u16(record->commentLength);
  return record;
}

void Zip64Locator::encode(unsigned char* to) const {
  FieldWriter(to).u32(kSignature).u32(recordDisk).u64(recordOffset).u32(disks);
}

std::optional<Zip64Locator> Zip64Locator::decode(Bytes from) {
  std::optional<Zip64Locator> locator;
  if (!isHere<Zip64Locator>(from)) return locator;
  locator.emplace();
  FieldReader(from.data() + 4)
      .u32(locator->recordDisk)
      .u64(locator->recordOffset)
      .u32(locator->disks);
  return locator;
}

void Zip64EndRecord::encode(unsigned char* to) const {
  FieldWriter(to)
      .u32(kSignature)
      .u64(recordSize)
      .u16(madeBy)
      .u16(versionNeeded)
      .u32(disk)
      .u32(directoryDisk)
      .u64(entriesHere)
      .u64(entries)
      .u64(directorySize)
      .u64(directoryOffset);
}

std::optional<Zip64EndRecord> Zip64EndRecord::decode(Bytes from) {
  std::optional<Zip64EndRecord> record;
  if (!isHere<Zip64EndRecord>(from)) return record;
  record.emplace();
  FieldReader(from.data() + 4)
      .u64(record->recordSize)
      .u16(record->madeBy)
      .u16(record->versionNeeded)
      .u32(record->disk)
      .u32(record->directoryDisk)
      .u64(record->entriesHere)
      .u64(record->entries)
      .u64(record->directorySize)
      .u64(record->directoryOffset);
  return record;
}

}  // namespace opc::zippackage
