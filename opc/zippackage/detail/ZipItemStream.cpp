// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/ZipItemStream.h"

#include <algorithm>

#include "opc/Exception.h"

namespace opc::zippackage::detail {
namespace {

constexpr std::size_t kBlockSize = std::size_t{256} << 10;

[[noreturn]] void refuse(const char* why) {
  throw FormatError("ZP-15", why, ErrorCode::Damaged);
}

}  // namespace

ZipItemStream::ZipItemStream(const PackageFile& file, const ZipEntry& entry,
                             std::uint64_t dataOffset)
    : file_(file),
      method_(entry.method),
      expectedCrc_(entry.crc),
      left_(entry.size),
      next_(dataOffset),
      packedLeft_(entry.packedSize) {}

std::size_t ZipItemStream::read(unsigned char* buffer, std::size_t size) {
  const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(size, left_));
  if (wanted == 0) return 0;
  const std::size_t count =
      method_ == kStored ? readStored(buffer, wanted) : unpack(buffer, wanted);
  crc_ = updateCrc(crc_, {buffer, count});
  if (count == left_) checkEnd();
  left_ -= count;
  return count;
}

std::size_t ZipItemStream::readStored(unsigned char* buffer, std::size_t size) {
  file_.readAt(next_, buffer, size);
  next_ += size;
  packedLeft_ -= size;
  return size;
}

std::size_t ZipItemStream::unpack(unsigned char* buffer, std::size_t size) {
  for (;;) {
    const std::size_t count = inflater_.unpack(packed_, buffer, size);
    if (count > 0) return count;
    if (inflater_.isEnd()) refuse("the data unpack to less than the declared size");
    if (!refill()) refuse("the packed data are cut off");
  }
}

bool ZipItemStream::refill() {
  if (!packed_.empty()) return true;
  if (packedLeft_ == 0) return false;
  block_.resizeForOverwrite(
      static_cast<std::size_t>(std::min<std::uint64_t>(packedLeft_, kBlockSize)));
  file_.readAt(next_, block_.data(), block_.size());
  next_ += block_.size();
  packedLeft_ -= block_.size();
  packed_ = block_.bytes();
  return true;
}

// All bytes are out; what is left of the packed data must be the end of the stream and no more.
void ZipItemStream::checkEnd() {
  while (method_ == kDeflated && !inflater_.isEnd()) {
    unsigned char surplus = 0;
    if (inflater_.unpack(packed_, &surplus, 1) > 0) {
      refuse("the data unpack to more than the declared size");
    }
    if (!inflater_.isEnd() && !refill()) refuse("the packed data are cut off");
  }
  if (!packed_.empty() || packedLeft_ > 0) refuse("bytes follow the end of the packed data");
  if (crc_ != expectedCrc_) refuse("the checksum is wrong");
}

}  // namespace opc::zippackage::detail
