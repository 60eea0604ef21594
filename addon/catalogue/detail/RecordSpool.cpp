// SPDX-License-Identifier: MIT
#include "addon/catalogue/detail/RecordSpool.h"

#include <unistd.h>

#include <cerrno>

#include "opc/Exception.h"
#include "opc/SystemCall.h"
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
  std::uint64_t end = startOf(ends_, ends_.size());
  while (!line.empty()) {
    const ssize_t count = opc::uninterrupted(
        [&] { return ::pwrite(file_.get(), line.data(), line.size(), static_cast<off_t>(end)); });
    if (count < 0) throw opc::SystemError(kWhat, errno);
    end += static_cast<std::uint64_t>(count);
    line.remove_prefix(static_cast<std::size_t>(count));
  }
  ends_.push_back(end);
  return ends_.size() - 1;
}

std::string RecordSpool::line(std::size_t index) const {
  std::uint64_t from = startOf(ends_, index);
  std::string line(static_cast<std::size_t>(ends_[index] - from), '\0');
  std::size_t done = 0;
  while (done < line.size()) {
    const ssize_t count = opc::uninterrupted([&] {
      return ::pread(file_.get(), line.data() + done, line.size() - done,
                     static_cast<off_t>(from + done));
    });
    if (count <= 0) throw opc::SystemError("cannot read a temporary file", count < 0 ? errno : EIO);
    done += static_cast<std::size_t>(count);
  }
  return line;
}

}  // namespace addon::catalogue::detail
