// SPDX-License-Identifier: MIT
#include "addon/checks/detail/CaseFolding.h"

#include <unicode/uchar.h>
#include <unicode/utf16.h>

#include <algorithm>

#include "opc/Text.h"

namespace addon::checks::detail {
namespace {

bool isAscii(char c) {
  return static_cast<unsigned char>(c) < 0x80;
}

}  // namespace

std::string foldCase(std::string_view text) {
  if (std::all_of(text.begin(), text.end(), isAscii)) return opc::toLowerAscii(text);
  if (!opc::isUtf8(text)) return std::string(text);
  const std::u16string units = opc::fromUtf8(text);
  std::u16string folded;
  folded.reserve(units.size());
  for (std::size_t at = 0; at < units.size();) {
    UChar32 character = 0;
    U16_NEXT(units.data(), at, units.size(), character);
    character = u_foldCase(character, U_FOLD_CASE_DEFAULT);
    if (character > 0xFFFF) {
      folded += U16_LEAD(character);
      folded += U16_TRAIL(character);
    } else {
      folded += static_cast<char16_t>(character);
    }
  }
  return opc::toUtf8(folded);
}

}  // namespace addon::checks::detail
