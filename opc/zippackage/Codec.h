// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "opc/ByteBuffer.h"
#include "opc/zippackage/LittleEndian.h"

struct libdeflate_compressor;
struct libdeflate_decompressor;
struct z_stream_s;

namespace opc::zippackage {

/// Data of up to this size is packed and unpacked as a whole in memory; larger data is streamed.
inline constexpr std::size_t kWholeLimit = std::size_t{16} << 20;

/// CRC-32 of data that follow data whose CRC is `crc`; 0 to begin with.
std::uint32_t updateCrc(std::uint32_t crc, Bytes data);

/// Whether `packed` bytes of deflate data can unpack to `size`: it expands at most 1032-fold.
constexpr bool isPlausible(std::uint64_t packed, std::uint64_t size) {
  constexpr std::uint64_t kExpansion = 1032;
  return packed > UINT64_MAX / kExpansion || size <= packed * kExpansion;
}

/// Packs whole blocks of memory, at any level from 1 to 9.
class WholeDeflater {
 public:
  /// Packs `data`. False, with `into` unspecified, when that does not make them smaller.
  bool pack(int level, Bytes data, ByteBuffer& into);

 private:
  struct Free {
    void operator()(libdeflate_compressor* compressor) const;
  };
  std::array<std::unique_ptr<libdeflate_compressor, Free>, 10> byLevel_;
};

/// Unpacks whole blocks of memory.
class WholeInflater {
 public:
  WholeInflater();
  /// Unpacks `packed`, which must be exactly one complete deflate stream (RFC 1951) of `size`
  /// unpacked bytes; throws FormatError otherwise. Writes only to the `size` bytes at `into`.
  void unpack(Bytes packed, unsigned char* into, std::size_t size);

 private:
  struct Free {
    void operator()(libdeflate_decompressor* decompressor) const;
  };
  std::unique_ptr<libdeflate_decompressor, Free> decompressor_;
};

/// Packs data piece by piece, in memory that does not grow with them.
class StreamDeflater {
 public:
  explicit StreamDeflater(int level);

  /// Packs some of `data`, and moves `data` past the bytes that it consumed. At the end, to be
  /// called with `finish` and without data. Returns the number of bytes written to `into`. If it is
  /// less than `capacity`, more data is needed or the stream is complete.
  std::size_t pack(Bytes& data, bool finish, unsigned char* into, std::size_t capacity);

 private:
  struct Free {
    void operator()(z_stream_s* stream) const;
  };
  std::unique_ptr<z_stream_s, Free> stream_;
};

/// Unpacks data piece by piece.
class StreamInflater {
 public:
  StreamInflater();

  /// Unpacks some of `packed`, and moves `packed` past the bytes that it consumed. Returns the
  /// number of bytes written to `into`. Throws FormatError if the data is not a deflate stream.
  std::size_t unpack(Bytes& packed, unsigned char* into, std::size_t capacity);
  /// Whether the end of the stream has been read.
  bool isEnd() const { return isEnd_; }

 private:
  struct Free {
    void operator()(z_stream_s* stream) const;
  };
  std::unique_ptr<z_stream_s, Free> stream_;
  bool isEnd_ = false;
};

}  // namespace opc::zippackage
