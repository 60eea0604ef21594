// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string_view>

namespace opc::model::detail {

/// The first code unit that XML 1.0 cannot carry: controls but tab and line ends, lone surrogates,
/// U+FFFE and U+FFFF. The length of the text when there is none.
std::size_t findNonXml(std::u16string_view text);

inline bool isXmlText(std::u16string_view text) {
  return findNonXml(text) == text.size();
}

/// How many bytes the text takes in UTF-8. It must be XML text.
std::size_t utf8Length(std::u16string_view text);

}  // namespace opc::model::detail
