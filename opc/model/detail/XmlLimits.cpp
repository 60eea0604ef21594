// SPDX-License-Identifier: MIT
#include "opc/model/detail/XmlLimits.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <string>
#include <unordered_set>

#include "opc/model/DocumentPieces.h"
#include "opc/model/InvalidXMLDocument.h"
#include "opc/model/XercesHelper.h"
#include "opc/model/XmlEncoding.h"

namespace opc::model::detail {
namespace {

constexpr std::size_t kEnd = std::string_view::npos;

bool isSpace(char c) {
  return c == ' ' || c == '\n' || c == '\t' || c == '\r';
}

// The bytes of what a reference stands for, given as "amp", "#38" or "#x26".
std::size_t referencedLength(std::string_view reference) {
  if (!reference.starts_with('#')) return 1;
  const bool isHexadecimal = reference.starts_with("#x");
  const std::string_view digits = reference.substr(isHexadecimal ? 2 : 1);
  std::uint32_t point = 0;  // the parser refuses what is not a number
  std::from_chars(digits.data(), digits.data() + digits.size(), point, isHexadecimal ? 16 : 10);
  return point < 0x80 ? 1 : point < 0x800 ? 2 : point < 0x10000 ? 3 : 4;
}

// The bytes of an attribute's value.
std::size_t valueLength(std::string_view value) {
  std::size_t length = 0;
  for (std::size_t at = 0; at < value.size(); ++at) {
    const std::size_t close = value[at] == '&' ? value.find(';', at) : at;
    if (close == kEnd) return length;
    length += close == at ? 1 : referencedLength(value.substr(at + 1, close - at - 1));
    at = close;
  }
  return length;
}

// Walks over the markup. Where that is not well-formed it stops, as the parser will.
class LimitCheck {
 public:
  LimitCheck(std::string_view document, PieceLimits pieces)
      : text_(document), checksPieces_(pieces == PieceLimits::Checked) {}

  void run() {
    const std::size_t null = text_.find('\0');
    if (null != kEnd) fail("not well-formed: the document holds U+0000", null, "XM-3");
    while ((at_ = text_.find('<', at_)) != kEnd) {
      if (depth_ <= 1) {
        pieceStart_ = at_;
        pieceNodes_ = nodes_;
        referenceBytes_ = 0;
      }
      markup();
      if (checksPieces_) checkPiece();
    }
  }

 private:
  void markup() {
    const std::string_view rest = text_.substr(at_);
    if (rest.starts_with("</")) {
      endTag();
    } else if (rest.starts_with("<!--")) {
      skipPast("-->", 4);
    } else if (rest.starts_with("<![CDATA[")) {
      countNode();
      skipPast("]]>", 9);
    } else if (rest.starts_with("<?")) {
      skipPast("?>", 2);
    } else if (rest.starts_with("<!DOCTYPE")) {
      fail("a document type declaration is not allowed", at_, "XM-2");
    } else {
      startTag();
    }
  }

  // The root itself is not a piece, but its start tag is, and each comment.
  void checkPiece() {
    const std::size_t size = std::min(at_, text_.size()) - pieceStart_;
    if (size > kMaxPieceSize + referenceBytes_) {
      fail("a child of the root element, or a comment, is longer than " +
               std::to_string(kMaxPieceSize) + " bytes",
           pieceStart_, "RB-1");
    }
    if (nodes_ - pieceNodes_ > kMaxPieceNodes) {
      fail("a child of the root element has more than " + std::to_string(kMaxPieceNodes) +
               " elements and attributes",
           pieceStart_, "RB-1");
    }
  }

  void skipPast(std::string_view close, std::size_t from) {
    const std::size_t found = text_.find(close, at_ + from);
    at_ = found == kEnd ? kEnd : found + close.size();
  }

  void endTag() {
    if (depth_ != 0) declarations_ -= declaredAt_[--depth_];
    skipPast(">", 2);
  }

  void startTag() {
    start_ = at_++;
    attributes_ = 0;
    declared_ = 0;
    lookUps_ = 1;
    enterElement(takeName());
    while (takeAttribute()) {
    }
    declarations_ += declared_;
    spend(lookUps_ * declarations_ + attributes_ * attributes_ / 2);
    if (at_ != kEnd) leaveStartTag();
  }

  void enterElement(std::string_view name) {
    if (depth_ == XercesHelper::kMaxDepth) {
      fail("elements are nested more than " + std::to_string(XercesHelper::kMaxDepth) + " deep",
           start_, "RB-11");
    }
    countNode();
    countName(name);
  }

  // At the '>' or '/' that ends a start tag.
  void leaveStartTag() {
    const bool isEmpty = text_[at_] == '/';
    if (isEmpty) {
      declarations_ -= declared_;
    } else {
      declaredAt_[depth_++] = declared_;
    }
    ++at_;
  }

  // Takes one attribute. False, with the position at the tag's end, when there is none.
  bool takeAttribute() {
    skipSpace();
    if (at_ >= text_.size()) return stop();
    if (text_[at_] == '>' || text_[at_] == '/') return false;
    const std::size_t place = at_;
    const std::string_view name = takeName();
    skipSpace();
    if (at_ >= text_.size() || text_[at_] != '=') return stop();
    ++at_;
    skipSpace();
    if (at_ >= text_.size() || (text_[at_] != '"' && text_[at_] != '\'')) return stop();
    const std::size_t close = text_.find(text_[at_], at_ + 1);
    if (close == kEnd) return stop();
    countAttribute(name, text_.substr(at_ + 1, close - at_ - 1), place);
    at_ = close + 1;
    return true;
  }

  bool stop() {
    at_ = kEnd;
    return false;
  }

  void skipSpace() {
    while (at_ < text_.size() && isSpace(text_[at_])) ++at_;
  }

  std::string_view takeName() {
    const std::size_t from = at_;
    while (at_ < text_.size() && !isSpace(text_[at_]) && text_[at_] != '=' && text_[at_] != '>' &&
           text_[at_] != '/') {
      ++at_;
    }
    return text_.substr(from, at_ - from);
  }

  void countAttribute(std::string_view name, std::string_view value, std::size_t place) {
    if (++attributes_ > XercesHelper::kMaxAttributes) {
      fail("an element has more than " + std::to_string(XercesHelper::kMaxAttributes) +
               " attributes",
           place, "RB-10");
    }
    if (value.size() > XercesHelper::kMaxAttributeLength) checkLength(value, place);
    countNode();
    countName(name);
    if (name.starts_with("xmlns")) {
      ++declared_;
      countName(value);
    } else if (name.find(':') != kEnd) {
      ++lookUps_;
    }
  }

  void checkLength(std::string_view value, std::size_t place) {
    const std::size_t length = valueLength(value);
    if (length > XercesHelper::kMaxAttributeLength) {
      fail("an attribute's value is longer than " +
               std::to_string(XercesHelper::kMaxAttributeLength) + " bytes",
           place, "RB-10");
    }
    referenceBytes_ += value.size() - length;
  }

  void countNode() {
    if (++nodes_ > XercesHelper::kMaxNodes) {
      fail("the document has more than " + std::to_string(XercesHelper::kMaxNodes) +
               " elements and attributes",
           at_, "RB-1");
    }
  }

  // The parser's table of names has a fixed width: each look-up costs a share of all names.
  void countName(std::string_view name) {
    names_.insert(name);
    spend(names_.size() / 8);
  }

  void spend(std::uint64_t comparisons) {
    comparisons_ += comparisons;
    if (comparisons_ > XercesHelper::kMaxComparisons) {
      fail("the document has too many different names, attributes or namespaces to be read",
           std::min(at_, text_.size()), "RB-7");
    }
  }

  [[noreturn]] void fail(const std::string& why, std::size_t offset, const char* rule) const {
    const TextPosition place = positionAt(text_, offset);
    throw InvalidXMLDocument(why, place.line, place.column, rule);
  }

  std::string_view text_;
  bool checksPieces_;
  std::size_t at_ = 0;
  std::uint64_t nodes_ = 0;
  std::size_t pieceStart_ = 0;
  std::uint64_t pieceNodes_ = 0;
  std::size_t referenceBytes_ = 0;  // of it, that the parser makes shorter
  std::uint64_t comparisons_ = 0;
  std::unordered_set<std::string_view> names_;

  unsigned depth_ = 0;
  std::uint64_t declarations_ = 0;  // of namespaces, in scope
  std::array<std::uint64_t, XercesHelper::kMaxDepth> declaredAt_{};

  // Of the start tag at hand.
  std::size_t start_ = 0;
  std::uint64_t attributes_ = 0;
  std::uint64_t declared_ = 0;
  std::uint64_t lookUps_ = 0;
};

}  // namespace

void checkXmlLimits(std::string_view document, PieceLimits pieces) {
  LimitCheck(document, pieces).run();
}

}  // namespace opc::model::detail
