// SPDX-License-Identifier: MIT
#include "addon/catalogue/detail/RecordSpool.h"

#include <cerrno>

#include "opc/Exception.h"
#include "opc/FileIo.h"
#include "opc/TemporaryFile.h"

namespace addon::catalogue::detail {

namespace {

constexpr const char* kWhat = "cannot write a temporary file";

std::uint64_t startOf(const std::vector<std::uint64_t>& ends, std::size_t index) {
  return index == 0 ? 0 : ends[index - 1];
}

}  // namespace

RecordSpool::RecordSpool(const std::string& folder) : file_(opc::createNamelessFile(folder)) {
  if (!file_) throw opc::SystemError(kWhat + (" in '" + folder + "'"), errno);
}

std::size_t RecordSpool::add(std::string_view line) {
  const std::uint64_t end = startOf(ends_, ends_.size());
  opc::writeFully(file_.get(), end, line.data(), line.size(), kWhat);
  ends_.push_back(end + line.size());
  return ends_.size() - 1;
}

std::string RecordSpool::line(std::size_t index) const {
  const std::uint64_t from = startOf(ends_, index);
  std::string line(static_cast<std::size_t>(ends_[index] - from), '\0');
  opc::readFully(file_.get(), from, line.data(), line.size(), "cannot read a temporary file");
  return line;
}

}  // namespace addon::catalogue::detail
