// SPDX-License-Identifier: MIT
#include "tool/RealPath.h"

#include <filesystem>
#include <system_error>

namespace tool {

std::string realPath(const std::string& path) {
  std::error_code ignored;
  return std::filesystem::canonical(path, ignored).string();
}

bool liesIn(std::string_view path, std::string_view folder) {
  if (folder.empty() || !path.starts_with(folder)) return false;
  return folder.back() == '/' || path.size() == folder.size() || path[folder.size()] == '/';
}

}  // namespace tool
