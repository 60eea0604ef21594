// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "opc/zippackage/LittleEndian.h"
#include "opc/zippackage/ZipFormat.h"

namespace opc::zippackage {

/// What may be wrong with the extra fields of a header.
enum class ExtraFault : std::uint8_t {
  None,
  Cut,        ///< they end in bytes that are not a whole field
  Zip64Twice  ///< readers may take either
};

/// For a text about a header, such as "has malformed extra fields".
const char* describe(ExtraFault fault);

/// Iterates over the extra fields of a header, each of which has an id, a length and data (APPNOTE
/// 4.5.1).
class ExtraFieldWalk {
 public:
  static constexpr std::size_t kHeaderSize = 4;

  explicit ExtraFieldWalk(Bytes extra) : left_(extra) {}

  /// Goes to the first or next field; false at the end, also one that is malformed.
  bool next() {
    if (left_.size() < kHeaderSize) return false;
    const std::size_t length = load16(left_.data() + 2);
    if (left_.size() - kHeaderSize < length) return false;
    id_ = load16(left_.data());
    data_ = left_.subspan(kHeaderSize, length);
    left_ = left_.subspan(kHeaderSize + length);
    return true;
  }
  std::uint16_t id() const { return id_; }
  Bytes data() const { return data_; }
  /// After the end: whether bytes are left over that are not a whole field.
  bool isMalformed() const { return !left_.empty(); }

  static ExtraFault faultOf(Bytes extra);

  /// The data of the first field `id`, when there is one.
  static std::optional<Bytes> find(Bytes extra, std::uint16_t id);

 private:
  Bytes left_;
  Bytes data_;
  std::uint16_t id_ = 0;
};

/// The ZIP64 field (APPNOTE 4.5.3) with values that do not fit into the header. It holds, in this
/// order, exactly the values whose own field in the header has all bits set.
struct Zip64Extra {
  static constexpr std::uint16_t kId = 0x0001;
  static constexpr std::size_t kMaxSize = ExtraFieldWalk::kHeaderSize + 28;

  std::optional<std::uint64_t> size = std::nullopt;
  std::optional<std::uint64_t> packedSize = std::nullopt;
  std::optional<std::uint64_t> headerOffset = std::nullopt;
  std::optional<std::uint32_t> disk = std::nullopt;

  /// The values that a header leaves to the field, each 0.
  static Zip64Extra neededBy(const CentralHeader& header);
  static Zip64Extra neededBy(const LocalHeader& header);

  /// Whether all readers find these values in a field's data: it holds just those that are set in
  /// `needed`, or from the first on as many as it has room for.
  bool agrees(Bytes data, const Zip64Extra& needed) const;

  /// Reads, from the field's data, the values that are set already (to anything). False when
  /// there are too few. What else the field holds does not matter.
  bool decode(Bytes data);
  /// Writes the field with its header; nothing when no value is set. Returns how many bytes.
  std::size_t encode(unsigned char* to) const;
};

/// The exact time of last change, in UTC.
struct TimestampExtra {
  static constexpr std::uint16_t kId = 0x5455;
  static constexpr std::size_t kSize = ExtraFieldWalk::kHeaderSize + 5;

  std::int32_t modified = 0;  ///< seconds since 1970

  /// Nothing when the field does not hold that time.
  static std::optional<TimestampExtra> decode(Bytes data);
  /// Writes kSize bytes, the same in both headers.
  void encode(unsigned char* to) const;
};

/// The same as ticks of 100 ns since 1601: for times that the other field has no room for.
struct NtfsTimeExtra {
  static constexpr std::uint16_t kId = 0x000A;
  static constexpr std::size_t kSize = ExtraFieldWalk::kHeaderSize + 32;

  std::int64_t modified = 0;  ///< seconds since 1970, rounded down

  /// Whether the field can hold a time.
  static bool holds(std::int64_t seconds);
  /// Nothing when the field does not hold that time.
  static std::optional<NtfsTimeExtra> decode(Bytes data);
  /// Writes kSize bytes, the same in both headers. The field must be able to hold the time.
  void encode(unsigned char* to) const;
};

/// An exact time in the field that has room for it.
struct TimeExtra {
  static constexpr std::size_t kMaxSize = NtfsTimeExtra::kSize;

  /// Nothing when none of a header's extra fields holds the time.
  static std::optional<std::int64_t> find(Bytes extra);
  /// Writes the field, at most kMaxSize bytes; nothing when there is none for the time. Returns how
  /// many bytes.
  static std::size_t encode(std::int64_t seconds, unsigned char* to);
};

}  // namespace opc::zippackage
