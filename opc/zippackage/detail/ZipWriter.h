// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

#include "opc/ByteBuffer.h"
#include "opc/ContentHash.h"
#include "opc/interfaces/IContentSource.h"
#include "opc/zippackage/Codec.h"
#include "opc/zippackage/ZipDirectory.h"
#include "opc/zippackage/ZipFormat.h"
#include "opc/zippackage/detail/ItemPacker.h"
#include "opc/zippackage/detail/OutputFile.h"

namespace opc::zippackage::detail {

/// A new item, as its headers tell it.
struct ItemHead {
  std::string_view name;  ///< ASCII, at most kMaxNameLength bytes
  int level = 6;          ///< 0 stores
  bool executable = false;
  std::int64_t time = 0;     ///< seconds since 1970
  bool isTimeExact = false;  ///< not just when it was packed: worth a field of its own
};

/// What became of an item, and where.
struct WrittenItem {
  std::uint64_t offset = 0;      ///< of its header
  std::uint64_t dataOffset = 0;  ///< of its packed data
  std::uint64_t packedSize = 0;
  std::uint64_t size = 0;
  std::uint32_t crc = 0;
  std::uint16_t method = kStored;
  std::optional<bool> hasPassed = std::nullopt;  ///< as that of the PackedItem
};

/// A directory entry must not be longer than 65,535 bytes, fields that we may add included.
inline constexpr std::size_t kMaxNameLength = 0xFFFF - CentralHeader::kSize - 64;

/// From where on numbers go into ZIP64 fields. Only tests set it lower.
struct Zip64Limits {
  std::uint64_t value = kZip64Sentinel32;
  std::uint64_t count = kZip64Sentinel16;
};

/// Writes a ZIP file: items, then the directory.
class ZipWriter {
 public:
  /// Called within a large item with how much of it has been read.
  using OnProgress = std::function<void(std::uint64_t)>;

  /// `out` must outlive it.
  explicit ZipWriter(OutputFile& out, Zip64Limits limits = {}) : out_(out), limits_(limits) {}

  /// Packs what `source` holds, however much it said that it would be. Up to kWholeLimit it is
  /// read whole. Throws what the source throws, and ErrorCode::TooLarge when it said less than
  /// 4 GiB and holds more. `hash`, which may be null, gets the hash of what was packed.
  WrittenItem add(const ItemHead& head, interfaces::IContentSource& source,
                  const OnProgress& advanced, ContentHash::Value* hash = nullptr);

  /// Writes an item that is packed already.
  WrittenItem add(const ItemHead& head, const PackedItem& packed);

  /// Writes an item with the same content as one that was written before, by copying its packed
  /// data.
  void addRepeated(const ItemHead& head, const WrittenItem& first);

  /// Takes an entry over into the directory: its bytes were copied to `offset` already.
  void addCopied(const ZipDirectory& from, std::size_t entry, std::uint64_t offset);

  /// How many items there are so far.
  std::uint64_t count() const { return entries_; }

  /// Writes the directory and the end records.
  void finish(Bytes comment);

 private:
  WrittenItem addStreamed(const ItemHead& head, interfaces::IContentSource& source,
                          InputStream& stream, const OnProgress& advanced,
                          ContentHash::Value* hash);
  void pump(WrittenItem& item, int level, InputStream& stream, Bytes begun,
            const std::function<void(Bytes)>& taken);
  void packTo(StreamDeflater& deflater, Bytes data, bool finish);
  Bytes localHeader(const ItemHead& head, const WrittenItem& item, bool wide);
  void addToDirectory(const ItemHead& head, const WrittenItem& item);
  void addRecord(const CentralHeader& header, std::string_view name, Bytes extra);
  void addWithNewZip64(const ZipDirectory& from, std::size_t entry, std::uint64_t offset);

  OutputFile& out_;
  Zip64Limits limits_;
  std::vector<unsigned char> directory_;
  std::uint64_t entries_ = 0;
  ItemPacker packer_;
  ByteBuffer packed_;
  std::vector<unsigned char> header_;
};

}  // namespace opc::zippackage::detail
