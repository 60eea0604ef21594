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

namespace opc::zippackage::detail {

/// The data of an item, as they go into the file.
struct PackedItem {
  std::uint64_t size = 0;  ///< unpacked
  std::uint32_t crc = 0;   ///< of the unpacked data
  std::uint16_t method = kStored;
  Bytes data;  ///< packed, unless that makes them no smaller
};

/// Reads items whole and packs them, one after the other.
class ItemPacker {
 public:
  /// Packs all that `stream`, which is of `source`, holds. The result is good until the next call.
  /// Nothing when it holds more than kWholeLimit: begun() is then what was read.
  std::optional<PackedItem> pack(int level, InputStream& stream,
                                 const interfaces::IContentSource& source);

  Bytes begun() const { return {input_.data(), size_}; }

 private:
  bool readWhole(InputStream& stream, std::uint64_t expected);

  WholeDeflater deflater_;
  ByteBuffer input_;
  std::size_t size_ = 0;  // of what is in input_
  ByteBuffer packed_;
};

}  // namespace opc::zippackage::detail
