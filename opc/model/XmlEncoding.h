// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace opc::model {

/// A position in a text, counted from 1.
struct TextPosition {
  std::uint64_t line = 1;
  std::uint64_t column = 1;
};

/// The place of byte `offset` in UTF-8 text. A line ends with LF, CR or both; columns count UTF-16
/// code units, as the parser's own do.
TextPosition positionAt(std::string_view text, std::size_t offset) noexcept;

/// An XML document as UTF-8, whichever of the two permitted encodings its bytes are in.
class XmlText {
 public:
  /// Takes UTF-8, with or without byte order mark, and UTF-16 with one. `bytes` must outlive the
  /// object. Throws InvalidXMLDocument with rule XM-1 for anything else: malformed or overlong
  /// sequences, lone surrogates, UTF-32, UTF-16 without its mark.
  explicit XmlText(std::string_view bytes);
  XmlText(const XmlText&) = delete;
  XmlText& operator=(const XmlText&) = delete;

  /// Without byte order mark.
  std::string_view utf8() const noexcept { return text_; }

  /// Throws InvalidXMLDocument with rule XM-1 unless a declaration that names `encoding` fits the
  /// bytes. ASCII case is ignored; an empty name fits.
  void checkDeclaration(std::u16string_view encoding) const;

 private:
  void convertUtf16(std::string_view bytes, bool bigEndian);

  std::string converted_;
  std::string_view text_;
  const char* encoding_ = "UTF-8";
};

}  // namespace opc::model
