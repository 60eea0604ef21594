// SPDX-License-Identifier: MIT
#include "tests/support/ZipBuilder.h"

#include <zlib.h>

#include <stdexcept>

namespace test {
namespace {

constexpr std::uint64_t kDosTime =
    (((2024 - 1980) << 9 | 2 << 5 | 29) << 16) | (12 << 11 | 30 << 5);

std::string littleEndian(std::uint64_t value, int bytes) {
  std::string text;
  for (int i = 0; i < bytes; ++i) text += static_cast<char>(value >> (8 * i));
  return text;
}

std::string packedData(const ZipItem& item) {
  if (item.packed) return *item.packed;
  return item.deflate ? deflated(item.content) : item.content;
}

std::uint16_t flagsOf(const ZipItem& item) {
  return item.descriptor ? 8 : 0;
}

std::string localHeader(const ZipItem& item, std::size_t packedSize) {
  const HeaderOverrides& o = item.local;
  const std::string& name = o.name ? *o.name : item.name;
  const bool isUnset = item.descriptor;
  return le32(o.signature.value_or(0x04034b50)) + le16(o.versionNeeded.value_or(20)) +
         le16(o.flags.value_or(flagsOf(item))) + le16(o.method.value_or(item.deflate ? 8 : 0)) +
         le32(o.dosTime.value_or(kDosTime)) +
         le32(o.crc.value_or(isUnset ? 0 : crcOf(item.content))) +
         le32(o.packedSize.value_or(isUnset ? 0 : packedSize)) +
         le32(o.size.value_or(isUnset ? 0 : item.content.size())) +
         le16(o.nameLength.value_or(name.size())) + le16(o.extraLength.value_or(o.extra.size())) +
         name + o.extra;
}

std::string centralHeader(const ZipItem& item, std::size_t packedSize, std::uint64_t offset) {
  const HeaderOverrides& o = item.central;
  const std::string& name = o.name ? *o.name : item.name;
  return le32(o.signature.value_or(0x02014b50)) + le16(o.madeBy.value_or(3 << 8 | 20)) +
         le16(o.versionNeeded.value_or(20)) + le16(o.flags.value_or(flagsOf(item))) +
         le16(o.method.value_or(item.deflate ? 8 : 0)) + le32(o.dosTime.value_or(kDosTime)) +
         le32(o.crc.value_or(crcOf(item.content))) + le32(o.packedSize.value_or(packedSize)) +
         le32(o.size.value_or(item.content.size())) + le16(o.nameLength.value_or(name.size())) +
         le16(o.extraLength.value_or(o.extra.size())) +
         le16(o.commentLength.value_or(item.comment.size())) + le16(o.disk.value_or(0)) +
         le16(o.internalAttributes.value_or(0)) +
         le32(o.externalAttributes.value_or(0100644u << 16)) + le32(o.offset.value_or(offset)) +
         name + o.extra + item.comment;
}

std::string descriptorOf(const ZipItem& item, std::size_t packedSize) {
  if (item.descriptorBytes) return *item.descriptorBytes;
  if (!item.descriptor) return {};
  const auto size = [&](std::uint64_t value) {
    return item.descriptorWide ? le64(value) : le32(value);
  };
  return (item.descriptorSignature ? le32(0x08074b50) : "") + le32(crcOf(item.content)) +
         size(packedSize) + size(item.content.size());
}

}  // namespace

std::string le16(std::uint64_t value) {
  return littleEndian(value, 2);
}
std::string le32(std::uint64_t value) {
  return littleEndian(value, 4);
}
std::string le64(std::uint64_t value) {
  return littleEndian(value, 8);
}

std::string extraField(std::uint16_t id, std::string_view data) {
  return le16(id) + le16(data.size()) + std::string(data);
}

std::uint32_t crcOf(std::string_view data) {
  return static_cast<std::uint32_t>(
      crc32_z(0, reinterpret_cast<const Bytef*>(data.data()), data.size()));
}

std::string deflated(std::string_view data) {
  z_stream stream{};
  if (deflateInit2(&stream, 6, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY) != Z_OK) {
    throw std::runtime_error("deflateInit2 failed");
  }
  std::string packed(deflateBound(&stream, static_cast<uLong>(data.size())), '\0');
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data.data()));
  stream.avail_in = static_cast<uInt>(data.size());
  stream.next_out = reinterpret_cast<Bytef*>(packed.data());
  stream.avail_out = static_cast<uInt>(packed.size());
  const int result = deflate(&stream, Z_FINISH);
  packed.resize(stream.total_out);
  deflateEnd(&stream);
  if (result != Z_STREAM_END) throw std::runtime_error("deflate failed");
  return packed;
}

std::string ZipBuilder::build() const {
  std::string file = prefix;
  std::string directory;
  std::uint64_t count = 0;
  for (const ZipItem& item : items) {
    const std::string data = packedData(item);
    file += item.before;
    const std::uint64_t offset = file.size();
    if (item.writeLocal)
      file += localHeader(item, data.size()) + data + descriptorOf(item, data.size());
    if (!item.writeCentral) continue;
    directory += centralHeader(item, data.size(), offset);
    ++count;
  }
  const std::uint64_t declaredOffset = directoryOffset.value_or(file.size());
  const std::uint64_t declaredSize = directorySize.value_or(directory.size());
  const std::uint64_t declaredCount = entries.value_or(count);
  const std::uint64_t declaredHere = entriesHere.value_or(declaredCount);
  file += directory + beforeEnd;
  if (zip64) {
    const std::uint64_t at = file.size();
    file += zip64Record.value_or(le32(0x06064b50) + le64(44) + le16(3 << 8 | 45) + le16(45) +
                                 le32(disk.value_or(0)) + le32(directoryDisk.value_or(0)) +
                                 le64(declaredHere) + le64(declaredCount) + le64(declaredSize) +
                                 le64(declaredOffset));
    file += le32(0x07064b50) + le32(0) + le64(zip64Offset.value_or(at)) + le32(disks.value_or(1));
  }
  const auto plainEnd = [&] {
    const std::string places =
        zip64
            ? le16(0) + le16(0) + le16(0xFFFF) + le16(0xFFFF) + le32(0xFFFFFFFF) + le32(0xFFFFFFFF)
            : le16(disk.value_or(0)) + le16(directoryDisk.value_or(0)) + le16(declaredHere) +
                  le16(declaredCount) + le32(declaredSize) + le32(declaredOffset);
    return le32(0x06054b50) + places + le16(commentLength.value_or(comment.size()));
  };
  file += endRecord ? *endRecord : plainEnd();
  return file + comment + suffix;
}

}  // namespace test
