// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace opc {

/// A path on the disk as the system has it: any bytes, where a path in UTF-16 stands for UTF-8.
struct SystemPath {
  std::string bytes;
};

}  // namespace opc
