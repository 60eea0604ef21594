// SPDX-License-Identifier: MIT
#include "addon/catalogue/SitePaths.h"

#include <algorithm>

#include "opc/Text.h"
#include "text/Sha256.h"

namespace addon::catalogue {

namespace {

constexpr std::size_t kMaxNameLength = 100;

bool isOfPlainName(char c) {
  return opc::isAsciiLetterOrDigit(c) || c == '.' || c == '_' || c == '-';
}

bool isPlainName(std::string_view text) {
  return !text.empty() && text.size() <= kMaxNameLength && text.front() != '.' &&
         std::all_of(text.begin(), text.end(), isOfPlainName);
}

}  // namespace

std::string hashedPath(std::string_view folder, std::string_view sha256,
                       std::string_view extension) {
  std::string path(folder);
  path += '/';
  path += sha256;
  return path += extension;
}

bool isHashedPath(std::string_view path, std::string_view folder, std::string_view sha256,
                  std::string_view extension) {
  return isHash(sha256) && path == hashedPath(folder, sha256, extension);
}

std::string keyOf(std::string_view guid) {
  return opc::toLowerAscii(guid);
}

std::string shardOf(std::string_view key) {
  return text::sha256Of(key).substr(0, 2);
}

std::string pathName(std::string_view text) {
  // A version that looks like the hash of another one gets a hash of its own.
  return isPlainName(text) && !isHash(text) ? std::string(text) : text::sha256Of(text);
}

std::string pageFolder(std::string_view guid, std::string_view version) {
  std::string path(kPageFolder);
  path += '/' + pathName(keyOf(guid));
  return path += '/' + pathName(version);
}

bool isHash(std::string_view text) noexcept {
  constexpr std::size_t kDigits = 64;
  return text.size() == kDigits && std::all_of(text.begin(), text.end(), [](char c) {
           return opc::isAsciiDigit(c) || (c >= 'a' && c <= 'f');
         });
}

}  // namespace addon::catalogue
