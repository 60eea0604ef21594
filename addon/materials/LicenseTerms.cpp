// SPDX-License-Identifier: MIT
#include "addon/materials/LicenseTerms.h"

#include <algorithm>
#include <cstddef>
#include <optional>

#include "opc/Text.h"

namespace addon::materials {

namespace detail {
extern const std::string_view kExceptionIds;
extern const std::string_view kLicenseIds;
}  // namespace detail

using opc::isAsciiLetterOrDigit;

namespace {

constexpr std::string_view kReference = "LicenseRef-";
constexpr std::size_t kMaxReferenceLength = 100;

/// The usual spelling of a name of the list, whose lines are names; nothing if it is not in it.
std::optional<std::string> findId(std::string_view list, std::string_view name) {
  const std::string wanted = opc::toLowerAscii(name);
  while (!list.empty()) {
    const std::size_t end = list.find('\n');
    const std::string_view id = list.substr(0, end);
    if (id.size() == wanted.size() && opc::toLowerAscii(id) == wanted) return std::string(id);
    list.remove_prefix(end + 1);
  }
  return std::nullopt;
}

bool isOfReference(char c) {
  return isAsciiLetterOrDigit(c) || c == '.' || c == '-';
}

/// The words of an expression; each parenthesis is one.
std::vector<std::string_view> wordsOf(std::string_view text) {
  constexpr std::string_view kEnds = " ()";
  std::vector<std::string_view> words;
  while (!text.empty()) {
    const bool isEnd = kEnds.find(text.front()) != kEnds.npos;
    const std::size_t size = isEnd ? 1 : std::min(text.find_first_of(kEnds), text.size());
    if (text.front() != ' ') words.push_back(text.substr(0, size));
    text.remove_prefix(size);
  }
  return words;
}

/// Reads an expression word by word.
class ExpressionReader {
 public:
  /// False if the word cannot stand here.
  bool take(std::string_view word) {
    switch (state_) {
      case State::License:
        return word == "(" ? open() : takeLicense(word);
      case State::Exception:
        return takeException(word);
      default:
        return takeOperator(word);
    }
  }

  bool isComplete() const {
    return depth_ == 0 && (state_ == State::AfterLicense || state_ == State::AfterTerm);
  }

  LicenseTerms takeTerms() { return std::move(terms_); }

 private:
  /// What comes next: a license, the exception after WITH, or an operator.
  enum class State { License, Exception, AfterLicense, AfterTerm };

  bool open() {
    ++depth_;
    append("(");
    return true;
  }

  bool takeLicense(std::string_view word) {
    state_ = State::AfterLicense;
    if (word.starts_with(kReference)) return takeReference(word);
    std::optional<std::string> id = findId(detail::kLicenseIds, word);
    if (!id && word.ends_with('+')) {
      id = findId(detail::kLicenseIds, word.substr(0, word.size() - 1));
      if (id) *id += '+';
    }
    if (id) append(*id);
    return id.has_value();
  }

  bool takeReference(std::string_view word) {
    if (word == kReference || !std::all_of(word.begin(), word.end(), isOfReference)) return false;
    append(word);
    auto& all = terms_.references;
    if (std::find(all.begin(), all.end(), word) == all.end()) all.emplace_back(word);
    return true;
  }

  bool takeException(std::string_view word) {
    state_ = State::AfterTerm;
    const std::optional<std::string> id = findId(detail::kExceptionIds, word);
    if (id) append(*id);
    return id.has_value();
  }

  bool takeOperator(std::string_view word) {
    if (word == ")") {
      if (depth_ == 0) return false;
      --depth_;
      terms_.expression += ')';
      state_ = State::AfterTerm;
      return true;
    }
    const bool isWith = word == "WITH" && state_ == State::AfterLicense;
    if (!isWith && word != "AND" && word != "OR") return false;
    append(word);
    state_ = isWith ? State::Exception : State::License;
    return true;
  }

  void append(std::string_view word) {
    std::string& text = terms_.expression;
    if (!text.empty() && text.back() != '(') text += ' ';
    text += word;
  }

  State state_ = State::License;
  std::size_t depth_ = 0;
  LicenseTerms terms_;
};

/// "LicenseRef-House-rules-2" for "House rules, 2".
std::string referenceFor(std::string_view label) {
  std::string name(kReference);
  for (const char c : label.substr(0, kMaxReferenceLength)) {
    if (isAsciiLetterOrDigit(c) || c == '.') {
      name += c;
    } else if (name.back() != '-') {
      name += '-';
    }
  }
  while (name.size() > kReference.size() && name.back() == '-') name.pop_back();
  return name.size() > kReference.size() ? name : name + "license";
}

}  // namespace

LicenseTerms licenseTermsOf(std::string_view type, bool hasText) {
  if (type.empty() && !hasText) return {};
  ExpressionReader reader;
  const std::vector<std::string_view> words = wordsOf(type);
  const bool isRead = std::all_of(words.begin(), words.end(),
                                  [&](std::string_view word) { return reader.take(word); });
  if (isRead && reader.isComplete()) return reader.takeTerms();
  const std::string reference = referenceFor(type);
  return {reference, {reference}};
}

}  // namespace addon::materials
