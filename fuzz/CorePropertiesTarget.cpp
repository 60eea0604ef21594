// SPDX-License-Identifier: MIT
// The core properties part: what is read is written, and what is written reads back equal.
#include <string>

#include "fuzz/Require.h"
#include "opc/model/XercesHelper.h"
#include "opc/plservices/CorePropertiesPart.h"

namespace {

using fuzz::require;
using opc::plservices::CorePropertiesPart;
using opc::plservices::DateProperty;
using opc::plservices::Keywords;
using opc::plservices::TextProperty;

CorePropertiesPart read(std::string_view xml) {
  opc::MemoryInputStream stream = fuzz::streamOver(xml);
  return CorePropertiesPart::read(stream);
}

std::string write(const CorePropertiesPart& part) {
  opc::TextOutputStream stream;
  part.write(stream);
  return stream.text;
}

// Adjacent texts, which a comment separated, are one text when they are read again.
Keywords joined(const Keywords& keywords) {
  Keywords result{{}, keywords.language};
  for (const Keywords::Piece& piece : keywords.pieces) {
    if (!piece.isValue && piece.text.empty()) continue;
    const bool isMore = !piece.isValue && !result.pieces.empty() && !result.pieces.back().isValue;
    if (isMore) {
      result.pieces.back().text += piece.text;
    } else {
      result.pieces.push_back(piece);
    }
  }
  return result;
}

bool isSame(const Keywords::Piece& a, const Keywords::Piece& b) {
  return a.text == b.text && a.isValue == b.isValue && a.language == b.language;
}

void checkKeywords(const Keywords& before, const Keywords& after) {
  const Keywords a = joined(before);
  const Keywords b = joined(after);
  require(a.language == b.language, "the language of the keywords comes back");
  require(a.pieces.size() == b.pieces.size(), "as many keywords come back");
  for (std::size_t i = 0; i < a.pieces.size(); ++i) {
    require(isSame(a.pieces[i], b.pieces[i]), "a keyword comes back");
  }
}

void checkEqual(const CorePropertiesPart& a, const CorePropertiesPart& b) {
  for (std::size_t i = 0; i < opc::plservices::kTextProperties; ++i) {
    const auto property = static_cast<TextProperty>(i);
    if (property == TextProperty::ContentType) continue;  // never written
    require(a.text(property) == b.text(property), "a text comes back");
  }
  for (std::size_t i = 0; i < opc::plservices::kDateProperties; ++i) {
    const auto property = static_cast<DateProperty>(i);
    require(a.date(property) == b.date(property), "a date comes back");
    require(a.distantDate(property) == b.distantDate(property), "a distant date comes back");
  }
  require(a.keywords().has_value() == b.keywords().has_value(), "keywords come back");
  if (a.keywords()) checkKeywords(*a.keywords(), *b.keywords());
}

// A date that the calendar cannot hold is written as it was read, and draws its warning again.
std::size_t distantDates(const CorePropertiesPart& part) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < opc::plservices::kDateProperties; ++i) {
    if (!part.distantDate(static_cast<DateProperty>(i)).empty()) ++count;
  }
  return count;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto part = fuzz::unlessRefused([&] { return read(fuzz::textOf(data, size)); });
  if (!part) return 0;

  const std::string xml = write(*part);
  const CorePropertiesPart again = read(xml);
  checkEqual(*part, again);
  require(again.warnings().size() == distantDates(*part), "what is written draws no warning");
  require(write(again) == xml, "equal properties give equal text");
  return 0;
}
