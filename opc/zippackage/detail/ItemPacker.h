// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "opc/ByteBuffer.h"
#include "opc/Streams.h"
#include "opc/interfaces/IContentSource.h"
#include "opc/zippackage/Codec.h"
#include "opc/zippackage/LittleEndian.h"
#include "opc/zippackage/ZipFormat.h"
#include "opc/zippackage/detail/KnownContents.h"

namespace opc::zippackage::detail {

/// The data of an item, as they go into the file.
struct PackedItem {
  std::uint64_t size = 0;  ///< unpacked
  std::uint32_t crc = 0;   ///< of the unpacked data
  std::uint16_t method = kStored;
  Bytes data;                                    ///< packed, unless that makes them no smaller
  std::optional<bool> hasPassed = std::nullopt;  ///< the test of its content, if there is one
  /// If others may have the same content. Without `isFirst`, it is all that is set: the content was
  /// packed before.
  std::optional<KnownContents::Match> content = std::nullopt;
};

/// Reads items whole and packs them, one after the other.
class ItemPacker {
 public:
  /// Reads all that `stream`, which is of `source`, holds. False when that is more than
  /// kWholeLimit: begun() is then only the beginning of it.
  bool read(InputStream& stream, const interfaces::IContentSource& source);
  /// What was read last.
  Bytes begun() const { return {input_.data(), size_}; }
  /// Packs it. The result is valid until the next call.
  PackedItem pack(int level, const interfaces::IContentSource& source);

 private:
  bool readWhole(InputStream& stream, std::uint64_t expected);

  WholeDeflater deflater_;
  ByteBuffer input_;
  std::size_t size_ = 0;  // of what is in input_
  ByteBuffer packed_;
};

}  // namespace opc::zippackage::detail
