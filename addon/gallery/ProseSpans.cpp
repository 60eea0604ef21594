// SPDX-License-Identifier: MIT
#include "addon/gallery/ProseSpans.h"

#include <array>

#include "opc/Text.h"

namespace addon::gallery {

namespace {

struct Sign {
  std::string_view mark;
  HtmlName element;
};

// The longer sign of two that begin alike comes first.
constexpr std::array kSigns{Sign{"`", "code"}, Sign{"**", "strong"}, Sign{"*", "em"}};
constexpr std::string_view kMarks = "`*";

/// Whether it can be part of a word; so can all that is not ASCII.
bool isOfWord(char c) {
  return opc::isAsciiLetterOrDigit(c) || static_cast<unsigned char>(c) >= 0x80;
}

class SpanWriter {
 public:
  SpanWriter(HtmlWriter& html, std::string_view text) : html_(html), text_(text) {}

  void write() {
    std::size_t written = 0;
    std::size_t at = text_.find_first_of(kMarks);
    while (at != std::string_view::npos) {
      const Sign& sign = signAt(at);
      const std::size_t begin = at + sign.mark.size();
      const std::size_t end = opens(sign, at) ? endOf(sign, begin) : std::string_view::npos;
      if (end != std::string_view::npos) {
        html_.text(text_.substr(written, at - written));
        html_.element(sign.element, text_.substr(begin, end - begin));
        written = end + sign.mark.size();
      }
      at = text_.find_first_of(kMarks, end == std::string_view::npos ? begin : written);
    }
    html_.text(text_.substr(written));
  }

 private:
  const Sign& signAt(std::size_t at) const {
    for (const Sign& sign : kSigns) {
      if (text_.substr(at).starts_with(sign.mark)) return sign;
    }
    return kSigns.back();
  }

  bool opens(const Sign& sign, std::size_t at) const {
    const std::size_t begin = at + sign.mark.size();
    if (begin >= text_.size() || text_[begin] == sign.mark.front()) return false;
    if (sign.mark == "`") return true;
    return !opc::isAsciiBlank(text_[begin]) && (at == 0 || !isOfWord(text_[at - 1]));
  }

  bool closes(const Sign& sign, std::size_t at) const {
    if (sign.mark == "`") return true;
    const std::size_t end = at + sign.mark.size();
    const bool isAfterText = !opc::isAsciiBlank(text_[at - 1]) && text_[at - 1] != '*';
    return isAfterText && (end == text_.size() || (!isOfWord(text_[end]) && text_[end] != '*'));
  }

  /// Where what begins there is closed. A sign that nothing closes from here on is not looked for
  /// again: nothing closes it further on either.
  std::size_t endOf(const Sign& sign, std::size_t begin) {
    bool& isHopeless = isHopeless_[static_cast<std::size_t>(&sign - kSigns.data())];
    if (isHopeless) return std::string_view::npos;
    std::size_t end = text_.find(sign.mark, begin + 1);
    while (end != std::string_view::npos && !closes(sign, end)) {
      end = text_.find(sign.mark, end + 1);
    }
    isHopeless = end == std::string_view::npos;
    return end;
  }

  HtmlWriter& html_;
  std::string_view text_;
  std::array<bool, kSigns.size()> isHopeless_{};
};

}  // namespace

void writeSpans(HtmlWriter& html, std::string_view text) {
  SpanWriter(html, text).write();
}

}  // namespace addon::gallery
