// SPDX-License-Identifier: MIT
#include "opc/Streams.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "opc/Exception.h"

namespace opc {

std::size_t StdIStreamAdaptor::read(unsigned char* buffer, std::size_t size) {
  stream_.read(reinterpret_cast<char*>(buffer), static_cast<std::streamsize>(size));
  if (stream_.bad()) throw Exception(ErrorCode::FileSystem, "cannot read from a stream");
  return static_cast<std::size_t>(stream_.gcount());
}

bool StdIStreamAdaptor::isEnd() {
  return !stream_.good() || stream_.peek() == std::istream::traits_type::eof();
}

void StdOStreamAdaptor::write(const unsigned char* data, std::size_t size) {
  stream_.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  if (!stream_) throw Exception(ErrorCode::FileSystem, "cannot write to a stream");
}

std::size_t MemoryInputStream::read(unsigned char* buffer, std::size_t size) {
  const std::size_t count = std::min(size, left_);
  if (count != 0) std::memcpy(buffer, next_, count);
  next_ += count;
  left_ -= count;
  return count;
}

void StreamHelper::copyStreamToStream(InputStream& from, OutputStream& to) {
  std::array<unsigned char, 65536> block;
  while (const std::size_t count = from.read(block.data(), block.size())) {
    to.write(block.data(), count);
  }
}

}  // namespace opc
