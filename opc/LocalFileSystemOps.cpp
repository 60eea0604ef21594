// SPDX-License-Identifier: MIT
#include "opc/LocalFileSystemOps.h"

namespace opc {

std::u16string LocalFileSystemOps::getExtension(std::u16string_view path) {
  const std::size_t slash = path.rfind(u'/');
  const std::u16string_view name =
      slash == std::u16string_view::npos ? path : path.substr(slash + 1);
  const std::size_t dot = name.rfind(u'.');
  if (dot == std::u16string_view::npos || dot == 0) return {};
  return std::u16string(name.substr(dot + 1));
}

}  // namespace opc
