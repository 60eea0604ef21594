// SPDX-License-Identifier: MIT
#include "opc/model/detail/XmlCharacters.h"

namespace opc::model::detail {
namespace {

bool isHigh(char16_t unit) {
  return (unit & 0xFC00u) == 0xD800;
}
bool isLow(char16_t unit) {
  return (unit & 0xFC00u) == 0xDC00;
}

bool isForbidden(char16_t unit) {
  if (unit < 0x20) return unit != u'\t' && unit != u'\n' && unit != u'\r';
  return unit >= 0xD800 && (unit < 0xE000 || unit > 0xFFFD);
}

}  // namespace

std::size_t findNonXml(std::u16string_view text) {
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (!isForbidden(text[at])) continue;
    if (!isHigh(text[at]) || at + 1 == text.size() || !isLow(text[at + 1])) return at;
    ++at;
  }
  return text.size();
}

std::size_t utf8Length(std::u16string_view text) {
  std::size_t length = 0;
  for (const char16_t unit : text) {
    const bool isSurrogate = isHigh(unit) || isLow(unit);
    length += unit < 0x80 ? 1u : unit < 0x800 || isSurrogate ? 2u : 3u;
  }
  return length;
}

}  // namespace opc::model::detail
