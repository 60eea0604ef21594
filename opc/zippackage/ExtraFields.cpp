// SPDX-License-Identifier: MIT
#include "opc/zippackage/ExtraFields.h"

#include <algorithm>
#include <limits>

namespace opc::zippackage {
namespace {

constexpr unsigned char kHasModified = 1;

constexpr std::int64_t kTicksPerSecond = 10000000;
constexpr std::int64_t kFrom1601To1970 = 11644473600;  ///< seconds
constexpr std::size_t kNtfsReserved = 4;
constexpr std::uint16_t kNtfsTimesTag = 1;
constexpr std::size_t kNtfsTimesSize = 24;

bool take64(Bytes& from, std::optional<std::uint64_t>& value) {
  if (!value) return true;
  if (from.size() < 8) return false;
  value = load64(from.data());
  from = from.subspan(8);
  return true;
}

}  // namespace

const char* describe(ExtraFault fault) {
  if (fault == ExtraFault::Zip64Twice) return "has two ZIP64 fields";
  return fault == ExtraFault::Cut ? "has malformed extra fields" : "";
}

ExtraFault ExtraFieldWalk::faultOf(Bytes extra) {
  // One field and nothing else, as a rule.
  if (extra.size() >= kHeaderSize && kHeaderSize + load16(extra.data() + 2) == extra.size()) {
    return ExtraFault::None;
  }
  std::size_t wideFields = 0;
  ExtraFieldWalk walk(extra);
  while (walk.next()) wideFields += walk.id() == Zip64Extra::kId ? 1 : 0;
  if (walk.isMalformed()) return ExtraFault::Cut;
  return wideFields > 1 ? ExtraFault::Zip64Twice : ExtraFault::None;
}

std::optional<Bytes> ExtraFieldWalk::find(Bytes extra, std::uint16_t id) {
  ExtraFieldWalk walk(extra);
  while (walk.next()) {
    if (walk.id() == id) return walk.data();
  }
  return std::nullopt;
}

Zip64Extra Zip64Extra::neededBy(const CentralHeader& header) {
  Zip64Extra needed;
  if (header.size == kZip64Sentinel32) needed.size = 0;
  if (header.packedSize == kZip64Sentinel32) needed.packedSize = 0;
  if (header.headerOffset == kZip64Sentinel32) needed.headerOffset = 0;
  if (header.disk == kZip64Sentinel16) needed.disk = 0;
  return needed;
}

Zip64Extra Zip64Extra::neededBy(const LocalHeader& header) {
  Zip64Extra needed;
  if (header.size == kZip64Sentinel32) needed.size = 0;
  if (header.packedSize == kZip64Sentinel32) needed.packedSize = 0;
  return needed;
}

bool Zip64Extra::agrees(Bytes data, const Zip64Extra& needed) const {
  unsigned char bytes[kMaxSize];
  const std::size_t least = needed.encode(bytes);
  if (data.size() == (least == 0 ? 0 : least - ExtraFieldWalk::kHeaderSize)) return true;
  const std::size_t most = encode(bytes) - ExtraFieldWalk::kHeaderSize;
  const bool isWhole =
      data.size() % 8 == 0 || data.size() == kMaxSize - ExtraFieldWalk::kHeaderSize;
  return isWhole && data.size() <= most &&
         std::equal(data.begin(), data.end(), bytes + ExtraFieldWalk::kHeaderSize);
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

// 0 ticks stand for a time that is not known; more than 63 bits some readers take as negative.
bool NtfsTimeExtra::holds(std::int64_t seconds) {
  constexpr std::int64_t kLatest =
      std::numeric_limits<std::int64_t>::max() / kTicksPerSecond - kFrom1601To1970;
  return seconds > -kFrom1601To1970 && seconds <= kLatest;
}

std::optional<NtfsTimeExtra> NtfsTimeExtra::decode(Bytes data) {
  if (data.size() < kNtfsReserved) return std::nullopt;
  // Its attributes are laid out as extra fields are.
  const auto times = ExtraFieldWalk::find(data.subspan(kNtfsReserved), kNtfsTimesTag);
  if (!times || times->size() < 8) return std::nullopt;
  const std::uint64_t ticks = load64(times->data());
  if (ticks == 0 || ticks > std::uint64_t{std::numeric_limits<std::int64_t>::max()}) {
    return std::nullopt;
  }
  return NtfsTimeExtra{static_cast<std::int64_t>(ticks) / kTicksPerSecond - kFrom1601To1970};
}

void NtfsTimeExtra::encode(unsigned char* to) const {
  store16(to, kId);
  store16(to + 2, kSize - ExtraFieldWalk::kHeaderSize);
  store32(to + 4, 0);
  store16(to + 8, kNtfsTimesTag);
  store16(to + 10, kNtfsTimesSize);
  const auto ticks = static_cast<std::uint64_t>((modified + kFrom1601To1970) * kTicksPerSecond);
  // Of change, of access and of creation: the last two are not known, and must not be 0.
  for (const std::size_t at : {12u, 20u, 28u}) store64(to + at, ticks);
}

std::optional<std::int64_t> TimeExtra::find(Bytes extra) {
  const auto field = ExtraFieldWalk::find(extra, TimestampExtra::kId);
  const auto seconds = field ? TimestampExtra::decode(*field) : std::nullopt;
  if (seconds) return seconds->modified;
  const auto wideField = ExtraFieldWalk::find(extra, NtfsTimeExtra::kId);
  const auto wide = wideField ? NtfsTimeExtra::decode(*wideField) : std::nullopt;
  if (wide) return wide->modified;
  return std::nullopt;
}

std::size_t TimeExtra::encode(std::int64_t seconds, unsigned char* to) {
  using Narrow = std::numeric_limits<std::int32_t>;
  if (seconds >= Narrow::min() && seconds <= Narrow::max()) {
    TimestampExtra{static_cast<std::int32_t>(seconds)}.encode(to);
    return TimestampExtra::kSize;
  }
  if (!NtfsTimeExtra::holds(seconds)) return 0;
  NtfsTimeExtra{seconds}.encode(to);
  return NtfsTimeExtra::kSize;
}

}  // namespace opc::zippackage
