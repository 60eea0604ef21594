// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "opc/FileDescriptor.h"

namespace addon::catalogue::detail {

/// Lines that wait in a file without a name, so that thousands of records take no memory.
class RecordSpool {
 public:
  /// `folder` is where the file is. Throws opc::SystemError, as all functions do.
  explicit RecordSpool(const std::string& folder);

  /// Returns the index of the line.
  std::size_t add(std::string_view line);
  std::string line(std::size_t index) const;
  std::size_t size() const { return ends_.size(); }

 private:
  opc::FileDescriptor file_;
  std::vector<std::uint64_t> ends_;
};

}  // namespace addon::catalogue::detail
