// SPDX-License-Identifier: MIT
#include "opc/zippackage/ExtraFields.h"

namespace opc::zippackage {
namespace {

constexpr unsigned char kHasModified = 1;

bool take64(Bytes& from, std::optional<std::uint64_t>& value) {
  if (!value) return true;
  if (from.size() < 8) return false;
  value = load64(from.data());
  from = from.subspan(8);
  return true;
}

}  // namespace

bool ExtraFieldWalk::next() {
  if (left_.size() < kHeaderSize) return false;
  const std::size_t length = load16(left_.data() + 2);
  if (left_.size() - kHeaderSize < length) return false;
  id_ = load16(left_.data());
  data_ = left_.subspan(kHeaderSize, length);
  left_ = left_.subspan(kHeaderSize + length);
  return true;
}

std::optional<Bytes> ExtraFieldWalk::find(Bytes extra, std::uint16_t id) {
  ExtraFieldWalk walk(extra);
  while (walk.next()) {
    if (walk.id() == id) return walk.data();
  }
  return std::nullopt;
}

bool Zip64Extra::decode(Bytes data) {
  if (!take64(data, size) || !take64(data, packedSize) || !take64(data, headerOffset)) return false;
  if (!disk) return true;
  if (data.size() < 4) return false;
  disk = load32(data.data());
  return true;
}

std::size_t Zip64Extra::encode(unsigned char* to) const {
  unsigned char* next = to + ExtraFieldWalk::kHeaderSize;
  for (const auto& value : {size, packedSize, headerOffset}) {
    if (!value) continue;
    store64(next, *value);
    next += 8;
  }
  if (disk) {
    store32(next, *disk);
    next += 4;
  }
  const auto length = static_cast<std::size_t>(next - to);
  if (length == ExtraFieldWalk::kHeaderSize) return 0;
  store16(to, kId);
  store16(to + 2, static_cast<std::uint16_t>(length - ExtraFieldWalk::kHeaderSize));
  return length;
}

std::optional<TimestampExtra> TimestampExtra::decode(Bytes data) {
  if (data.size() < 5 || (data[0] & kHasModified) == 0) return std::nullopt;
  return TimestampExtra{static_cast<std::int32_t>(load32(data.data() + 1))};
}

void TimestampExtra::encode(unsigned char* to) const {
  store16(to, kId);
  store16(to + 2, kSize - ExtraFieldWalk::kHeaderSize);
  to[4] = kHasModified;
  store32(to + 5, static_cast<std::uint32_t>(modified));
}

}  // namespace opc::zippackage
