// SPDX-License-Identifier: MIT
#include "opc/Streams.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <ios>
#include <limits>

#include "opc/Exception.h"

namespace opc {
namespace {

// Runs a stream operation. A stream may throw for what its state says as well.
template <typename Operation>
void onStream(Operation operation) {
  try {
    operation();
  } catch (const std::ios_base::failure&) {
    return;  // The caller looks at the state.
  }
}

std::streamsize streamSize(std::size_t size) {
  constexpr auto kMaxStreamSize =
      static_cast<std::size_t>(std::numeric_limits<std::streamsize>::max());
  return static_cast<std::streamsize>(std::min(size, kMaxStreamSize));
}

}  // namespace

std::size_t StdIStreamAdaptor::read(unsigned char* buffer, std::size_t size) {
  onStream([&] { stream_.read(reinterpret_cast<char*>(buffer), streamSize(size)); });
  requireReadable();
  return static_cast<std::size_t>(stream_.gcount());
}

bool StdIStreamAdaptor::isEnd() {
  bool isEnd = true;
  onStream([&] { isEnd = stream_.peek() == std::istream::traits_type::eof(); });
  requireReadable();
  return isEnd;
}

// A stream that failed without having come to its end (one that was never opened, say) must not
// look like an empty one.
void StdIStreamAdaptor::requireReadable() const {
  if (stream_.bad() || (stream_.fail() && !stream_.eof())) {
    throw Exception(ErrorCode::FileSystem, "cannot read from a stream");
  }
}

void StdOStreamAdaptor::write(const unsigned char* data, std::size_t size) {
  onStream([&] { stream_.write(reinterpret_cast<const char*>(data), streamSize(size)); });
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

std::string StreamHelper::readToEnd(InputStream& stream) {
  TextOutputStream result;
  copyStreamToStream(stream, result);
  return std::move(result.text);
}

}  // namespace opc
