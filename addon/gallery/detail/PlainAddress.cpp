// SPDX-License-Identifier: MIT
#include "addon/gallery/detail/PlainAddress.h"

#include <algorithm>
#include <charconv>
#include <chrono>

#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/model/PartName.h"

namespace addon::gallery::detail {

using opc::isAsciiLetterOrDigit;

namespace {

constexpr std::size_t kMaxMailLength = 254;
constexpr std::size_t kMaxLinkLength = 2000;

/// Labels of letters, digits and hyphens with single dots between them.
bool isHostName(std::string_view name) {
  if (name.empty() || !isAsciiLetterOrDigit(name.front()) || !isAsciiLetterOrDigit(name.back()))
    return false;
  if (name.find("..") != std::string_view::npos) return false;
  return std::all_of(name.begin(), name.end(),
                     [](char c) { return isAsciiLetterOrDigit(c) || c == '-' || c == '.'; });
}

bool isMail(std::string_view text) {
  const std::size_t at = text.find('@');
  if (at == std::string_view::npos || text.size() > kMaxMailLength) return false;
  const std::string_view user = text.substr(0, at);
  const std::string_view host = text.substr(at + 1);
  const auto isOfUser = [](char c) {
    return isAsciiLetterOrDigit(c) || std::string_view("._+-").find(c) != std::string_view::npos;
  };
  const bool isUser = !user.empty() && isAsciiLetterOrDigit(user.front()) &&
                      std::all_of(user.begin(), user.end(), isOfUser);
  return isUser && isHostName(host) && host.find('.') != std::string_view::npos;
}

bool isPort(std::string_view text) {
  return !text.empty() && text.size() <= 5 &&
         std::all_of(text.begin(), text.end(), opc::isAsciiDigit);
}

/// A host, an optional port and a path. A user is refused: it can be made to look like a host.
bool isWeb(std::string_view text) {
  const std::size_t scheme = text.starts_with("https://") ? 8 : 7;
  if (scheme == 7 && !text.starts_with("http://")) return false;
  if (text.size() > kMaxLinkLength) return false;
  text.remove_prefix(scheme);
  const std::size_t end = std::min(text.find_first_of("/?#"), text.size());
  const std::string_view authority = text.substr(0, end);
  const std::size_t colon = authority.find(':');
  if (colon != std::string_view::npos && !isPort(authority.substr(colon + 1))) return false;
  const auto isOfPath = [](char c) {
    return c > ' ' && c < 0x7F &&
           std::string_view("\"'<>\\^`{|}").find(c) == std::string_view::npos;
  };
  const std::string_view path = text.substr(end);
  return isHostName(authority.substr(0, colon)) && std::all_of(path.begin(), path.end(), isOfPath);
}

/// The value of the digits; -1 for any other text.
int numberOf(std::string_view digits) {
  int number = 0;
  const char* const end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, number);
  return error == std::errc() && stop == end && digits.front() != '-' ? number : -1;
}

}  // namespace

std::string linkOf(std::string_view address) {
  if (isMail(address)) return "mailto:" + std::string(address);
  return isWeb(address) ? std::string(address) : std::string();
}

std::string filePathOf(std::string_view address) {
  while (address.starts_with("./")) address.remove_prefix(2);
  try {
    return opc::model::percentDecodePath(address.substr(0, address.find_first_of("?#")));
  } catch (const opc::FormatError&) {
    return {};
  }
}

bool isPlainDate(std::string_view text) {
  if (text.size() != 10 || text[4] != '-' || text[7] != '-') return false;
  const int year = numberOf(text.substr(0, 4));
  const int month = numberOf(text.substr(5, 2));
  const int day = numberOf(text.substr(8, 2));
  if (year < 1 || month < 0 || day < 0) return false;
  return (std::chrono::year(year) / month / day).ok();
}

}  // namespace addon::gallery::detail
