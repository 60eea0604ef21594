// SPDX-License-Identifier: MIT
#include "opc/model/ContentType.h"

#include "opc/Exception.h"
#include "opc/Text.h"

namespace opc::model {
namespace {

constexpr std::string_view kPackageTypes = "application/vnd.openxmlformats-package.";

bool isTokenCharacter(char c) {
  constexpr std::string_view kSeparators = "()<>@,;:\\\"/[]?={}";
  return c > ' ' && c < 0x7F && kSeparators.find(c) == std::string_view::npos;
}

bool isBlank(char c) {
  return c == ' ' || c == '\t';
}

// Reads a media type from front to back. What does not fit leaves it where it stands.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : text_(text) {}

  bool isEnd() const { return at_ == text_.size(); }

  bool skip(char c) {
    if (isEnd() || text_[at_] != c) return false;
    ++at_;
    return true;
  }

  void skipBlanks() {
    while (!isEnd() && isBlank(text_[at_])) ++at_;
  }

  bool skipToken() {
    const std::size_t start = at_;
    while (!isEnd() && isTokenCharacter(text_[at_])) ++at_;
    return at_ != start;
  }

  bool skipQuoted() {
    if (!skip('"')) return false;
    while (!isEnd() && text_[at_] != '"') {
      if (text_[at_] == '\\') ++at_;
      if (isEnd() || !isQuotable(text_[at_])) return false;
      ++at_;
    }
    return skip('"');
  }

  // ";name=value", with blanks around the semicolon.
  bool skipParameter() {
    skipBlanks();
    if (!skip(';')) return false;
    skipBlanks();
    return skipToken() && skip('=') && (skipToken() || skipQuoted());
  }

 private:
  static bool isQuotable(char c) { return c == '\t' || (c >= ' ' && c < 0x7F); }

  std::string_view text_;
  std::size_t at_ = 0;
};

FormatError invalidType(std::string_view type, const char* rule, const char* why) {
  return {rule, "invalid content type '" + std::string(type) + "': " + why,
          ErrorCode::InvalidArgument};
}

void check(std::string_view type) {
  Scanner scanner(type);
  if (!scanner.skipToken() || !scanner.skip('/') || !scanner.skipToken()) {
    throw invalidType(type, "CT-7", "it does not read 'type/subtype'");
  }
  const bool hasParameters = !scanner.isEnd();
  while (!scanner.isEnd()) {
    if (scanner.skipParameter()) continue;
    throw invalidType(type, "CT-7", "what follows the subtype is not a list of ';name=value'");
  }
  if (hasParameters && toLowerAscii(type).starts_with(kPackageTypes)) {
    throw invalidType(type, "CT-8", "a type of the package format takes no parameters");
  }
}

}  // namespace

ContentType::ContentType(std::u16string_view type) {
  type_.reserve(type.size());
  for (const char16_t unit : type) {
    if (unit >= 0x80) throw invalidType(toUtf8ForDisplay(type), "CT-7", "it is not ASCII");
    type_ += static_cast<char>(unit);
  }
  check(type_);
}

ContentType ContentType::fromAscii(std::string_view type) {
  check(type);
  return ContentType(std::string(type));
}

std::u16string ContentType::toString() const {
  return {type_.begin(), type_.end()};
}

std::string ContentType::withoutSpaces() const {
  std::string result;
  result.reserve(type_.size());
  bool quoted = false;
  for (std::size_t at = 0; at < type_.size(); ++at) {
    const char c = type_[at];
    if (!quoted && isBlank(c)) continue;
    if (c == '"') quoted = !quoted;
    result += c;
    if (quoted && c == '\\') result += type_[++at];
  }
  return result;
}

bool ContentType::hasParameters() const {
  return type_.find(';') != std::string::npos;
}

bool ContentType::isParticular() const {
  const std::string_view subtype = std::string_view(type_).substr(type_.find('/') + 1);
  const std::string tree = toLowerAscii(subtype.substr(0, 4));
  return tree == "vnd." || tree == "prs." || tree.starts_with("x.");
}

bool operator==(const ContentType& a, const ContentType& b) {
  if (a.type_ == b.type_) return true;
  // Only parameters have blanks.
  const bool arePlain = !a.hasParameters() && !b.hasParameters();
  if (arePlain && a.type_.size() != b.type_.size()) return false;
  return toLowerAscii(a.withoutSpaces()) == toLowerAscii(b.withoutSpaces());
}

}  // namespace opc::model
