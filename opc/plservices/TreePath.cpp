// SPDX-License-Identifier: MIT
#include "opc/plservices/TreePath.h"

#include <algorithm>
#include <string>

#include "opc/Exception.h"
#include "opc/Text.h"

namespace opc::plservices {
namespace {

const char* findComponentFault(std::string_view name) noexcept {
  if (name.empty()) return "it has an empty component";
  if (name == ".") return "it has a component '.'";
  if (name == "..") return "it has a component '..'";
  return nullptr;
}

}  // namespace

const char* findPathFault(std::string_view path) noexcept {
  if (path.empty()) return "it is empty";
  if (path.find('\0') != std::string_view::npos) return "it holds a NUL character";
  if (!isUtf8(path)) return "it is not UTF-8";
  for (std::size_t begin = 0; begin != std::string_view::npos;) {
    const std::size_t slash = path.find('/', begin);
    const bool last = slash == std::string_view::npos;
    const std::string_view name = path.substr(begin, last ? slash : slash - begin);
    if (const char* fault = findComponentFault(name)) return fault;
    begin = last ? slash : slash + 1;
  }
  return nullptr;
}

std::string_view requireTreePath(std::string_view path) {
  const std::string_view relative = path.starts_with('/') ? path.substr(1) : path;
  if (const char* fault = findPathFault(relative)) {
    throw Exception(ErrorCode::InvalidName,
                    "path '" + std::string(path) + "' is not valid in a package: " + fault);
  }
  return relative;
}

bool hasControlCharacter(std::string_view text) noexcept {
  for (std::size_t at = 0; at < text.size(); ++at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    if (byte < 0x20 || byte == 0x7F) return true;
    // U+0080..U+009F are C2 80..C2 9F.
    if (byte == 0xC2 && at + 1 < text.size() && static_cast<unsigned char>(text[at + 1]) < 0xA0) {
      return true;
    }
  }
  return false;
}

const char* findUnpackingFault(std::string_view itemName) noexcept {
  constexpr std::size_t kMaxBytes = 4000;  // Some programs cut off what is longer.
  if (itemName.size() > kMaxBytes) return "is longer than 4,000 bytes";
  const std::size_t semicolon = itemName.rfind(';');
  if (semicolon == std::string_view::npos) return nullptr;
  const std::string_view version = itemName.substr(semicolon + 1);
  const bool isNumber = std::all_of(version.begin(), version.end(), isAsciiDigit);
  return isNumber ? "ends in a version number, which some programs remove" : nullptr;
}

std::string_view lastComponent(std::string_view path) noexcept {
  const std::size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

std::string_view extensionOf(std::string_view path) noexcept {
  const std::string_view name = lastComponent(path);
  const std::size_t dot = name.rfind('.');
  if (dot == std::string_view::npos || dot == 0) return {};
  return name.substr(dot + 1);
}

}  // namespace opc::plservices
