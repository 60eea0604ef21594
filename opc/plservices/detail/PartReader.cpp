// SPDX-License-Identifier: MIT
#include "opc/plservices/detail/PartReader.h"

namespace opc::plservices::detail {
namespace {

constexpr std::uint64_t kMaxWholePart = std::uint64_t{16} << 20;
constexpr std::size_t kBlock = std::size_t{128} << 10;

}  // namespace

PartBlock PartReader::read() {
  if (stream_) return readStream();
  info_ = package_.partInfo(parts_[next_]);
  if (info_.size > kMaxWholePart) {
    stream_ = package_.openPart(parts_[next_]);
    return readStream();
  }
  package_.readPart(parts_[next_], buffer_, kMaxWholePart);
  ++next_;
  return {info_, buffer_.bytes(), true};
}

PartBlock PartReader::readStream() {
  buffer_.resizeForOverwrite(kBlock);
  const std::size_t count = stream_->read(buffer_.data(), buffer_.size());
  if (count > 0) return {info_, buffer_.bytes().first(count), false};
  stream_.reset();
  ++next_;
  return {info_, {}, true};
}

}  // namespace opc::plservices::detail
