// SPDX-License-Identifier: MIT
#include "tool/commands/detail/FileNames.h"

#include <cstddef>

#include "opc/Text.h"
#include "tool/process/Errors.h"

namespace tool::commands::detail {

std::u16string toUtf16(std::string_view what, const std::string& text) {
  if (!opc::isUtf8(text)) throw process::Failure(process::sentence(what, text, "it is not UTF-8"));
  return opc::fromUtf8(text);
}

std::string fileNameOf(const std::string& path) {
  const std::size_t slash = path.find_last_of('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string baseNameOf(const std::string& path) {
  const std::string name = fileNameOf(path);
  const std::size_t dot = name.find_last_of('.');
  return dot == std::string::npos || dot == 0 ? name : name.substr(0, dot);
}

}  // namespace tool::commands::detail
