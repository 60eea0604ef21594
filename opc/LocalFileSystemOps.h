// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace opc {

/// Questions about paths on the local disk. Paths are UTF-16 and stand for their UTF-8 bytes.
struct LocalFileSystemOps {
  /// What follows the last dot of the last path component, without the dot. Empty when there is
  /// none; a dot that begins the component (".profile") is none.
  static std::u16string getExtension(std::u16string_view path);
};

}  // namespace opc
