// SPDX-License-Identifier: MIT
#include "opc/zippackage/Codec.h"

#include <libdeflate.h>
#define ZLIB_CONST
#include <zlib.h>

#include <algorithm>
#include <limits>
#include <new>

#include "opc/Exception.h"

namespace opc::zippackage {
namespace {

constexpr int kRawDeflate = -MAX_WBITS;
constexpr const char* kRule = "ZP-15";

[[noreturn]] void refuseData(const char* why) {
  throw FormatError(kRule, why, ErrorCode::Damaged);
}

uInt clampForZlib(std::size_t size) {
  return static_cast<uInt>(std::min<std::size_t>(size, std::numeric_limits<uInt>::max()));
}

// Memory is all that zlib can be short of here: the other parameters are constants.
void requireInitialised(int result) {
  if (result != Z_OK) throw std::bad_alloc();
}

}  // namespace

std::uint32_t updateCrc(std::uint32_t crc, Bytes data) {
  return libdeflate_crc32(crc, data.data(), data.size());
}

void WholeDeflater::Free::operator()(libdeflate_compressor* compressor) const {
  libdeflate_free_compressor(compressor);
}

bool WholeDeflater::pack(int level, Bytes data, ByteBuffer& into) {
  auto& compressor = byLevel_.at(static_cast<std::size_t>(level));
  if (!compressor) compressor.reset(libdeflate_alloc_compressor(level));
  if (!compressor) throw std::bad_alloc();
  // The library wants some room after the result; with the whole bound it would go on packing what
  // has turned out to be larger than the data.
  constexpr std::size_t kSpare = 16;
  into.resizeForOverwrite(data.size() + kSpare);
  const std::size_t size = libdeflate_deflate_compress(compressor.get(), data.data(), data.size(),
                                                       into.data(), into.size());
  if (size == 0 || size >= data.size()) return false;
  into.resizeForOverwrite(size);
  return true;
}

void WholeInflater::Free::operator()(libdeflate_decompressor* decompressor) const {
  libdeflate_free_decompressor(decompressor);
}

WholeInflater::WholeInflater() : decompressor_(libdeflate_alloc_decompressor()) {
  if (!decompressor_) throw std::bad_alloc();
}

void WholeInflater::unpack(Bytes packed, unsigned char* into, std::size_t size) {
  std::size_t taken = 0;
  std::size_t made = 0;
  unsigned char nothing = 0;
  const libdeflate_result result =
      libdeflate_deflate_decompress_ex(decompressor_.get(), packed.data(), packed.size(),
                                       into != nullptr ? into : &nothing, size, &taken, &made);
  if (result == LIBDEFLATE_INSUFFICIENT_SPACE) {
    refuseData("the data unpack to more than the declared size");
  }
  if (result != LIBDEFLATE_SUCCESS) refuseData("the packed data are damaged");
  if (made != size) refuseData("the data unpack to less than the declared size");
  if (taken != packed.size()) refuseData("bytes follow the end of the packed data");
}

void StreamDeflater::Free::operator()(z_stream_s* stream) const {
  const std::unique_ptr<z_stream_s> owner(stream);
  deflateEnd(stream);
}

StreamDeflater::StreamDeflater(int level) {
  auto stream = std::make_unique<z_stream>();
  constexpr int kMemoryLevel = 8;
  requireInitialised(
      deflateInit2(stream.get(), level, Z_DEFLATED, kRawDeflate, kMemoryLevel, Z_DEFAULT_STRATEGY));
  stream_.reset(stream.release());
}

std::size_t StreamDeflater::pack(Bytes& data, bool finish, unsigned char* into,
                                 std::size_t capacity) {
  stream_->next_in = data.data();
  stream_->avail_in = clampForZlib(data.size());
  stream_->next_out = into;
  stream_->avail_out = clampForZlib(capacity);
  // Z_BUF_ERROR just says that there was nothing to do.
  deflate(stream_.get(), finish ? Z_FINISH : Z_NO_FLUSH);
  data = data.subspan(static_cast<std::size_t>(stream_->next_in - data.data()));
  return static_cast<std::size_t>(stream_->next_out - into);
}

void StreamInflater::Free::operator()(z_stream_s* stream) const {
  const std::unique_ptr<z_stream_s> owner(stream);
  inflateEnd(stream);
}

StreamInflater::StreamInflater() {
  auto stream = std::make_unique<z_stream>();
  requireInitialised(inflateInit2(stream.get(), kRawDeflate));
  stream_.reset(stream.release());
}

std::size_t StreamInflater::unpack(Bytes& packed, unsigned char* into, std::size_t capacity) {
  if (isEnd_) return 0;
  stream_->next_in = packed.data();
  stream_->avail_in = clampForZlib(packed.size());
  stream_->next_out = into;
  stream_->avail_out = clampForZlib(capacity);
  const int result = inflate(stream_.get(), Z_NO_FLUSH);
  if (result == Z_MEM_ERROR) throw std::bad_alloc();
  if (result != Z_OK && result != Z_STREAM_END && result != Z_BUF_ERROR) {
    refuseData("the packed data are damaged");
  }
  isEnd_ = result == Z_STREAM_END;
  packed = packed.subspan(static_cast<std::size_t>(stream_->next_in - packed.data()));
  return static_cast<std::size_t>(stream_->next_out - into);
}

}  // namespace opc::zippackage
