// SPDX-License-Identifier: MIT
#include "addon/checks/detail/DocumentText.h"

#include <algorithm>
#include <functional>
#include <string_view>

#include "opc/Streams.h"
#include "opc/model/XmlEncoding.h"

namespace addon::checks::detail {

using opc::model::XercesHelper;
using xercesc::DOMElement;

namespace {

// Finds the start tags of a well-formed document, in which '<' is always markup.
class StartTags {
 public:
  explicit StartTags(std::string_view text) : text_(text) {}

  // The line of the next start tag. There must be one.
  std::size_t nextLine() {
    while (true) {
      const std::size_t tag = std::min(text_.find('<', at_), text_.size());
      advance(tag);
      if (tag == text_.size() || isStartTag()) break;
      skipMarkup();
    }
    const std::size_t line = line_;
    advance(std::min(at_ + 1, text_.size()));
    return line;
  }

 private:
  bool isStartTag() const {
    const char next = at_ + 1 < text_.size() ? text_[at_ + 1] : '\0';
    return next != '/' && next != '!' && next != '?';
  }

  void skipMarkup() {
    const std::string_view rest = text_.substr(at_);
    if (rest.starts_with("<!--")) return skipPast("-->");
    if (rest.starts_with("<![CDATA[")) return skipPast("]]>");
    if (rest.starts_with("<?")) return skipPast("?>");
    skipPast(">");
  }

  void skipPast(std::string_view close) {
    const std::size_t found = text_.find(close, at_);
    advance(found == std::string_view::npos ? text_.size() : found + close.size());
  }

  // A line ends with LF, CR or both.
  void advance(std::size_t to) {
    for (; at_ < to; ++at_) {
      const bool isLineFeedNext = at_ + 1 < text_.size() && text_[at_ + 1] == '\n';
      if (text_[at_] == '\n' || (text_[at_] == '\r' && !isLineFeedNext)) ++line_;
    }
  }

  std::string_view text_;
  std::size_t at_ = 0;
  std::size_t line_ = 1;
};

std::string_view viewOf(const opc::ByteBuffer& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace

const DOMElement* nextElement(const DOMElement* element, const DOMElement* top) {
  if (const DOMElement* child = element->getFirstElementChild()) return child;
  for (const xercesc::DOMNode* node = element; node != top; node = node->getParentNode()) {
    const auto* at =
        static_cast<const DOMElement*>(node);  // true for all but the parent of the root
    if (const DOMElement* sibling = at->getNextElementSibling()) return sibling;
  }
  return nullptr;
}

DocumentText::DocumentText(opc::model::Package& package, opc::model::PartId part)
    : parser_(XercesHelper::createParser()), root_(nullptr) {
  package.readPart(part, bytes_, XercesHelper::kMaxDocumentSize);
  opc::MemoryInputStream stream(bytes_.data(), bytes_.size());
  root_ =
      XercesHelper::readDocumentFromStream(parser_, stream, false, u"", u"")->getDocumentElement();
}

std::size_t DocumentText::lineOf(const DOMElement* element) {
  if (lines_.empty()) findLines();
  const auto found = std::lower_bound(lines_.begin(), lines_.end(), element,
                                      [](const auto& entry, const DOMElement* wanted) {
                                        return std::less<const DOMElement*>()(entry.first, wanted);
                                      });
  return found != lines_.end() && found->first == element ? found->second : 0;
}

void DocumentText::findLines() {
  const opc::model::XmlText text(viewOf(bytes_));
  StartTags tags(text.utf8());
  for (const DOMElement* at = root_; at != nullptr; at = nextElement(at, root_)) {
    lines_.emplace_back(at, tags.nextLine());
  }
  std::sort(lines_.begin(), lines_.end(), [](const auto& a, const auto& b) {
    return std::less<const DOMElement*>()(a.first, b.first);
  });
}

}  // namespace addon::checks::detail
