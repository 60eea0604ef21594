// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/ReadWindow.h"

#include <algorithm>
#include <utility>

#include "opc/Exception.h"

namespace opc::zippackage::detail {
namespace {

constexpr std::size_t kMinSize = std::size_t{8} << 10;
constexpr std::size_t kMaxSize = std::size_t{1} << 20;

}  // namespace

Bytes ReadWindow::at(std::uint64_t offset, std::size_t size) {
  const std::uint64_t end = start_ + bytes_.size();
  if (offset < start_ || offset > end || size > end - offset) {
    if (offset > file_.size() || size > file_.size() - offset) {
      throw Exception(ErrorCode::Damaged, "the file ends before the data that it declares");
    }
    readAhead_ = nextReadAhead(offset);
    const std::uint64_t wanted = std::max<std::uint64_t>(size, readAhead_);
    const auto length = static_cast<std::size_t>(std::min(wanted, file_.size() - offset));
    ByteBuffer fresh = std::exchange(bytes_, {});  // Holds nothing, should reading fail.
    fresh.resizeForOverwrite(length);
    file_.readAt(offset, fresh.data(), length);
    bytes_ = std::move(fresh);
    start_ = offset;
  }
  return bytes_.bytes().subspan(static_cast<std::size_t>(offset - start_), size);
}

// A read is sequential if it begins in the buffer or soon after it.
std::size_t ReadWindow::nextReadAhead(std::uint64_t offset) {
  const std::uint64_t end = start_ + bytes_.size();
  const bool isInARow = offset >= start_ && offset <= end + kMinSize && bytes_.size() > 0;
  return isInARow ? std::min(readAhead_ * 4, kMaxSize) : kMinSize;
}

}  // namespace opc::zippackage::detail
