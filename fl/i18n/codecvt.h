// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace fl::i18n {

/// Converts whole UTF-16 strings to a named byte encoding.
class codecvt_ustring_to_string {
 public:
  /// `encoding`: any name that ICU knows, such as "UTF-8". `strict`: whether text that the encoding
  /// cannot carry (a lone surrogate, say) is an error; else it is replaced by the encoding's
  /// substitute. Throws opc::Exception (ErrorCode::InvalidArgument) for an unknown encoding.
  codecvt_ustring_to_string(std::string encoding, bool strict);

  /// Throws opc::Exception (ErrorCode::InvalidText) when strict.
  std::string convert(std::u16string_view text) const;

 private:
  std::string encoding_;
  bool strict_;
};

/// Converts whole strings of a named byte encoding to UTF-16; the same rules.
class codecvt_string_to_ustring {
 public:
  codecvt_string_to_ustring(std::string encoding, bool strict);
  std::u16string convert(std::string_view bytes) const;

 private:
  std::string encoding_;
  bool strict_;
};

}  // namespace fl::i18n
