// SPDX-License-Identifier: MIT
#include "text/Lines.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#include "opc/Text.h"

namespace text {

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && opc::isAsciiSpace(text.front())) text.remove_prefix(1);
  while (!text.empty() && opc::isAsciiSpace(text.back())) text.remove_suffix(1);
  return text;
}

std::string_view trimSlashes(std::string_view path) {
  while (path.starts_with('/')) path.remove_prefix(1);
  while (path.ends_with('/')) path.remove_suffix(1);
  return path;
}

std::vector<std::string_view> linesOf(std::string_view text) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of("\r\n\f"), text.size());
    lines.push_back(text.substr(0, end));
    text.remove_prefix(end);
    if (!text.empty()) text.remove_prefix(text.starts_with("\r\n") ? 2 : 1);
  }
  return lines;
}

std::size_t countLineFeeds(std::string_view text) {
  constexpr std::uint64_t kFeeds = 0x0A0A0A0A0A0A0A0A;
  constexpr std::uint64_t kLow = 0x7F7F7F7F7F7F7F7F;
  std::size_t count = 0;
  for (; text.size() >= sizeof kFeeds; text.remove_prefix(sizeof kFeeds)) {
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, text.data(), sizeof bytes);
    bytes ^= kFeeds;  // zero where there is one; the highest bit of each byte is set elsewhere
    const std::uint64_t others = ((bytes & kLow) + kLow) | bytes | kLow;
    count += static_cast<std::size_t>(std::popcount(~others));
  }
  return count + static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

}  // namespace text
