// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/ZipWriter.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

#include "opc/Exception.h"
#include "opc/zippackage/ExtraFields.h"
#include "opc/zippackage/detail/DosTime.h"

namespace opc::zippackage::detail {
namespace {

constexpr std::size_t kBlock = std::size_t{1} << 20;

std::size_t encodeTime(const ItemHead& head, unsigned char* to) {
  return head.isTimeExact ? TimeExtra::encode(head.time, to) : 0;
}

std::uint32_t fieldFor(std::uint64_t value, bool isElsewhere) {
  return isElsewhere ? kZip64Sentinel32 : static_cast<std::uint32_t>(value);
}

void append(std::vector<unsigned char>& to, const void* from, std::size_t size) {
  const auto* bytes = static_cast<const unsigned char*>(from);
  to.insert(to.end(), bytes, bytes + size);
}

std::uint32_t attributesFor(const ItemHead& head) {
  constexpr std::uint32_t kRegularFile = 0100000;
  return (kRegularFile | (head.executable ? 0755u : 0644u)) << 16;
}

}  // namespace

WrittenItem ZipWriter::add(const ItemHead& head, interfaces::IContentSource& source,
                           const OnProgress& advanced, ContentHash::Value* hash) {
  const std::unique_ptr<InputStream> stream = source.getInputStream();
  if (!packer_.read(*stream, source)) return addStreamed(head, source, *stream, advanced, hash);
  if (hash != nullptr) *hash = contentHash(packer_.begun());
  return add(head, packer_.pack(head.level, source));
}

WrittenItem ZipWriter::add(const ItemHead& head, const PackedItem& packed) {
  WrittenItem item;
  item.offset = out_.position();
  item.packedSize = packed.data.size();
  item.size = packed.size;
  item.crc = packed.crc;
  item.method = packed.method;
  item.hasPassed = packed.hasPassed;
  out_.write(localHeader(head, item, item.size >= limits_.value));
  item.dataOffset = out_.position();
  out_.write(packed.data);
  addToDirectory(head, item);
  return item;
}

void ZipWriter::addRepeated(const ItemHead& head, const WrittenItem& first) {
  WrittenItem item = first;
  item.offset = out_.position();
  out_.write(localHeader(head, item, item.size >= limits_.value));
  out_.repeat(first.dataOffset, first.packedSize);
  addToDirectory(head, item);
}

WrittenItem ZipWriter::addStreamed(const ItemHead& head, interfaces::IContentSource& source,
                                   InputStream& stream, const OnProgress& advanced,
                                   ContentHash::Value* hash) {
  const Bytes begun = packer_.begun();
  // Room for 64-bit sizes has to be made before the size is certain.
  const bool wide = std::max<std::uint64_t>(source.size(), begun.size()) >= limits_.value;
  WrittenItem item;
  std::optional<ContentHash> hashing;
  const auto taken = [&](Bytes data) {
    if (!wide && item.size >= limits_.value) {
      throw Exception(ErrorCode::TooLarge, "cannot pack '" + source.description() +
                                               "': it grew over 4 GiB while it was read");
    }
    if (hashing) hashing->update(data);
    advanced(item.size);
  };
  const auto pumpAll = [&](int level, InputStream& from, Bytes front) {
    if (hash != nullptr) hashing.emplace();
    pump(item, level, from, front, taken);
    if (hash != nullptr) *hash = hashing->finish();
  };
  item.offset = out_.position();
  out_.write(localHeader(head, item, wide));
  item.dataOffset = out_.position();
  pumpAll(head.level, stream, begun);
  item.packedSize = out_.position() - item.dataOffset;
  const bool isPackedTooSmall = item.packedSize < source.leastPackedSize();
  if (item.method == kDeflated && (item.packedSize >= item.size || isPackedTooSmall)) {
    out_.rewindTo(item.dataOffset);
    pumpAll(0, *source.getInputStream(), {});
    item.packedSize = item.size;
  }
  out_.patch(item.offset, localHeader(head, item, wide));
  addToDirectory(head, item);
  return item;
}

// Sets size, checksum and method, and writes the packed data.
void ZipWriter::pump(WrittenItem& item, int level, InputStream& stream, Bytes begun,
                     const std::function<void(Bytes)>& taken) {
  item.size = 0;
  item.crc = 0;
  item.method = level > 0 ? kDeflated : kStored;
  std::optional<StreamDeflater> deflater;
  if (level > 0) deflater.emplace(level);
  const auto take = [&](Bytes data) {
    item.size += data.size();
    taken(data);
    item.crc = updateCrc(item.crc, data);
    if (!deflater) return out_.write(data);
    packTo(*deflater, data, false);
  };
  if (!begun.empty()) take(begun);
  ByteBuffer block;
  block.resizeForOverwrite(kBlock);
  while (const std::size_t count = stream.read(block.data(), block.size())) {
    take({block.data(), count});
  }
  if (deflater) packTo(*deflater, {}, true);
}

void ZipWriter::packTo(StreamDeflater& deflater, Bytes data, bool finish) {
  packed_.resizeForOverwrite(kBlock);
  std::size_t count = 0;
  do {
    count = deflater.pack(data, finish, packed_.data(), packed_.size());
    out_.write({packed_.data(), count});
  } while (count == packed_.size() || !data.empty());
}

Bytes ZipWriter::localHeader(const ItemHead& head, const WrittenItem& item, bool wide) {
  unsigned char extra[Zip64Extra::kMaxSize + TimeExtra::kMaxSize];
  std::size_t extraSize = 0;
  if (wide) {
    Zip64Extra field;
    field.size = item.size;
    field.packedSize = item.packedSize;
    extraSize = field.encode(extra);
  }
  extraSize += encodeTime(head, extra + extraSize);
  LocalHeader header;
  header.versionNeeded = wide ? kVersionZip64 : kVersionPlain;
  header.method = item.method;
  header.dosTime = DosTime::fromUnix(head.time);
  header.crc = item.crc;
  header.packedSize = fieldFor(item.packedSize, wide);
  header.size = fieldFor(item.size, wide);
  header.nameLength = static_cast<std::uint16_t>(head.name.size());
  header.extraLength = static_cast<std::uint16_t>(extraSize);
  header_.resize(LocalHeader::kSize);
  header.encode(header_.data());
  append(header_, head.name.data(), head.name.size());
  append(header_, extra, extraSize);
  return header_;
}

void ZipWriter::addToDirectory(const ItemHead& head, const WrittenItem& item) {
  Zip64Extra wide;
  if (item.size >= limits_.value) wide.size = item.size;
  if (item.packedSize >= limits_.value) wide.packedSize = item.packedSize;
  if (item.offset >= limits_.value) wide.headerOffset = item.offset;
  unsigned char extra[Zip64Extra::kMaxSize + TimeExtra::kMaxSize];
  std::size_t extraSize = wide.encode(extra);
  CentralHeader header;
  header.versionNeeded = extraSize > 0 ? kVersionZip64 : kVersionPlain;
  extraSize += encodeTime(head, extra + extraSize);
  header.method = item.method;
  header.dosTime = DosTime::fromUnix(head.time);
  header.crc = item.crc;
  header.packedSize = fieldFor(item.packedSize, wide.packedSize.has_value());
  header.size = fieldFor(item.size, wide.size.has_value());
  header.headerOffset = fieldFor(item.offset, wide.headerOffset.has_value());
  header.externalAttributes = attributesFor(head);
  addRecord(header, head.name, {extra, extraSize});
}

void ZipWriter::addRecord(const CentralHeader& header, std::string_view name, Bytes extra) {
  CentralHeader record = header;
  record.nameLength = static_cast<std::uint16_t>(name.size());
  record.extraLength = static_cast<std::uint16_t>(extra.size());
  const std::size_t at = directory_.size();
  directory_.resize(at + CentralHeader::kSize);
  record.encode(directory_.data() + at);
  append(directory_, name.data(), name.size());
  append(directory_, extra.data(), extra.size());
  ++entries_;
}

// The record stays as it is, byte for byte, but for the offset.
void ZipWriter::addCopied(const ZipDirectory& from, std::size_t entry, std::uint64_t offset) {
  const Bytes record = from.record(entry);
  const std::uint32_t field = load32(record.data() + CentralHeader::kOffsetAt);
  if (field == kZip64Sentinel32 || offset >= limits_.value) {
    return addWithNewZip64(from, entry, offset);
  }
  const std::size_t at = directory_.size();
  append(directory_, record.data(), record.size());
  store32(directory_.data() + at + CentralHeader::kOffsetAt, static_cast<std::uint32_t>(offset));
  ++entries_;
}

void ZipWriter::addWithNewZip64(const ZipDirectory& from, std::size_t entry, std::uint64_t offset) {
  const ZipEntry& item = from.entries()[entry];
  CentralHeader header = from.header(entry);
  const bool isOffsetWide = offset >= limits_.value;
  Zip64Extra wide;
  if (header.size == kZip64Sentinel32) wide.size = item.size;
  if (header.packedSize == kZip64Sentinel32) wide.packedSize = item.packedSize;
  if (isOffsetWide) wide.headerOffset = offset;
  if (header.disk == kZip64Sentinel16) wide.disk = 0;
  header.headerOffset = fieldFor(offset, isOffsetWide);
  if (isOffsetWide) header.versionNeeded = std::max(header.versionNeeded, kVersionZip64);
  std::vector<unsigned char> extra(Zip64Extra::kMaxSize);
  extra.resize(wide.encode(extra.data()));
  const Bytes old = from.extra(entry);
  ExtraFieldWalk walk(old);
  std::size_t walked = 0;
  while (walk.next()) {
    const std::size_t size = ExtraFieldWalk::kHeaderSize + walk.data().size();
    if (walk.id() != Zip64Extra::kId) append(extra, old.data() + walked, size);
    walked += size;
  }
  append(extra, old.data() + walked, old.size() - walked);
  if (extra.size() > 0xFFFF) {
    throw Exception(ErrorCode::TooLarge, "cannot keep item '" + std::string(from.name(entry)) +
                                             "': its extra fields leave no room for its offset");
  }
  addRecord(header, from.storedName(entry), extra);
  const Bytes comment = from.record(entry).last(header.commentLength);
  append(directory_, comment.data(), comment.size());
}

void ZipWriter::finish(Bytes comment) {
  const std::uint64_t offset = out_.position();
  const std::uint64_t size = directory_.size();
  out_.write(directory_);
  const bool isWide = entries_ >= limits_.count || size >= limits_.value || offset >= limits_.value;
  if (isWide) {
    unsigned char bytes[Zip64EndRecord::kSize + Zip64Locator::kSize];
    Zip64EndRecord record;
    record.entriesHere = record.entries = entries_;
    record.directorySize = size;
    record.directoryOffset = offset;
    record.encode(bytes);
    Zip64Locator locator;
    locator.recordOffset = offset + size;
    locator.encode(bytes + Zip64EndRecord::kSize);
    out_.write(bytes);
  }
  unsigned char bytes[EndRecord::kSize];
  EndRecord end;
  end.entriesHere = end.entries =
      entries_ >= limits_.count ? kZip64Sentinel16 : static_cast<std::uint16_t>(entries_);
  end.directorySize = fieldFor(size, size >= limits_.value);
  end.directoryOffset = fieldFor(offset, offset >= limits_.value);
  end.commentLength = static_cast<std::uint16_t>(comment.size());
  end.encode(bytes);
  out_.write(bytes);
  out_.write(comment);
}

}  // namespace opc::zippackage::detail
