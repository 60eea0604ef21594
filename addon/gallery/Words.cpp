// SPDX-License-Identifier: MIT
#include "addon/gallery/Words.h"

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <new>

#include "opc/Text.h"

namespace addon::gallery {

namespace {

using icu::Normalizer2;
using icu::UnicodeString;

constexpr std::uint32_t kOfWords = U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK | U_GC_CO_MASK;

/// Appends characters, and one blank for all that is between words.
class Words {
 public:
  template <typename Character>
  void add(bool isOfWord, Character&& character) {
    if (isOfWord) {
      if (isBetween_) text += ' ';
      character(text);
    }
    isBetween_ = !isOfWord;
  }

  std::string text = {};

 private:
  bool isBetween_ = true;
};

bool isAccent(UChar32 point) {
  return point >= 0x300 && point <= 0x36F;
}

UChar32 lower(UChar32 point) {
  constexpr UChar32 kSigma = 0x3C3;
  constexpr UChar32 kFinalSigma = 0x3C2;
  const UChar32 result = u_tolower(point);
  return result == kFinalSigma ? kSigma : result;
}

UnicodeString withoutAccents(const UnicodeString& text, UErrorCode& error) {
  const Normalizer2* decomposer = Normalizer2::getNFDInstance(error);
  const Normalizer2* composer = Normalizer2::getNFCInstance(error);
  if (U_FAILURE(error)) return {};
  const UnicodeString parted = decomposer->normalize(text, error);
  UnicodeString plain;
  for (std::int32_t at = 0; at < parted.length(); at = parted.moveIndex32(at, 1)) {
    if (!isAccent(parted.char32At(at))) plain.append(parted.char32At(at));
  }
  return composer->normalize(plain, error);
}

std::string wordsOfAny(std::string_view text) {
  UErrorCode error = U_ZERO_ERROR;
  const UnicodeString plain = withoutAccents(UnicodeString::fromUTF8(text), error);
  if (U_FAILURE(error)) throw std::bad_alloc();
  Words words;
  for (std::int32_t at = 0; at < plain.length(); at = plain.moveIndex32(at, 1)) {
    const UChar32 point = plain.char32At(at);
    words.add((U_GET_GC_MASK(point) & kOfWords) != 0,
              [&](std::string& result) { UnicodeString(lower(point)).toUTF8String(result); });
  }
  return words.text;
}

}  // namespace

std::string wordsOf(std::string_view text) {
  if (!opc::isAscii(text)) return wordsOfAny(text);
  Words words;
  for (const char c : text) {
    words.add(opc::isAsciiLetterOrDigit(c),
              [&](std::string& result) { result += opc::toLowerAscii(c); });
  }
  return words.text;
}

std::string initialOf(std::string_view words) {
  std::string initial;
  if (words.empty()) return initial;
  const UnicodeString text = UnicodeString::fromUTF8(words);
  UnicodeString(u_toupper(text.char32At(1))).toUTF8String(initial);
  return initial;
}

std::vector<std::string> splitAtBlanks(std::string_view text) {
  const UnicodeString whole = UnicodeString::fromUTF8(text);
  std::vector<std::string> parts;
  std::int32_t start = 0;
  for (std::int32_t at = 0; at <= whole.length(); ++at) {
    if (at < whole.length() && !u_isUWhiteSpace(whole[at])) continue;
    if (at > start) whole.tempSubStringBetween(start, at).toUTF8String(parts.emplace_back());
    start = at + 1;
  }
  return parts;
}

}  // namespace addon::gallery
