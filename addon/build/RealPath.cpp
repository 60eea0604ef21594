// SPDX-License-Identifier: MIT
#include "addon/build/RealPath.h"

#include <filesystem>
#include <system_error>

namespace addon::build {

std::string realPath(const std::string& path) {
  std::error_code ignored;
  return std::filesystem::canonical(path, ignored).string();
}

bool liesIn(std::string_view path, std::string_view folder) {
  if (folder.empty() || !path.starts_with(folder)) return false;
  return folder.back() == '/' || path.size() == folder.size() || path[folder.size()] == '/';
}

}  // namespace addon::build
