// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "opc/zippackage/LittleEndian.h"

namespace opc::zippackage {

/// Walks the extra fields of a header: id, length, data, again and again.
class ExtraFieldWalk {
 public:
  static constexpr std::size_t kHeaderSize = 4;

  explicit ExtraFieldWalk(Bytes extra) : left_(extra) {}

  /// Goes to the first or next field; false at the end, also one that is malformed.
  bool next();
  std::uint16_t id() const { return id_; }
  Bytes data() const { return data_; }
  /// After the end: whether bytes are left over that are no whole field.
  bool isMalformed() const { return !left_.empty(); }

  /// The data of the first field `id`, when there is one.
  static std::optional<Bytes> find(Bytes extra, std::uint16_t id);

 private:
  Bytes left_;
  Bytes data_;
  std::uint16_t id_ = 0;
};

/// Values that do not fit their 32-bit field. A value stands here exactly when its field is full
/// of ones, in this order.
struct Zip64Extra {
  static constexpr std::uint16_t kId = 0x0001;
  static constexpr std::size_t kMaxSize = ExtraFieldWalk::kHeaderSize + 28;

  std::optional<std::uint64_t> size = std::nullopt;
  std::optional<std::uint64_t> packedSize = std::nullopt;
  std::optional<std::uint64_t> headerOffset = std::nullopt;
  std::optional<std::uint32_t> disk = std::nullopt;

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

}  // namespace opc::zippackage
