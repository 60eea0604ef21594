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

/// Up to here, data are packed and unpacked whole in memory; beyond, they are streamed.
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
  /// Throws FormatError unless `packed` is one whole deflate stream, without a byte more, for just
  /// the `size` bytes at `into`, which are all that it writes.
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

  /// Packs some of `data`, or after the last piece (`finish`, with no data) the end of the stream.
  /// Moves `data` past what it took. Returns how many bytes it put into `into`: with less than
  /// `capacity`, it wants more data, or is done.
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

  /// Unpacks some of `packed` and moves it past what it took. Returns how many bytes it put into
  /// `into`. Throws FormatError when this is not a deflate stream.
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
