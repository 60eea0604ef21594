// SPDX-License-Identifier: MIT
#include "addon/project/detail/TomlMessage.h"

#include "opc/Text.h"

namespace addon::project::detail {

namespace {

bool contains(std::string_view text, std::string_view part) {
  return text.find(part) != text.npos;
}

/// The text from a position on; "" behind its end.
std::string_view restFrom(std::string_view text, Position position) {
  std::size_t at = 0;
  for (std::uint32_t line = 1; line < position.line; ++line) {
    at = text.find('\n', at);
    if (at == text.npos) return {};
    ++at;
  }
  for (std::uint32_t column = 1; column < position.column && at < text.size(); ++column) {
    do {
      ++at;
    } while (at < text.size() && opc::isUtf8Continuation(text[at]));
  }
  return text.substr(at);
}

bool isAtLineEnd(std::string_view rest) {
  return rest.empty() || rest.starts_with('\n') || rest.starts_with("\r\n");
}

/// The character at the beginning of `rest`, of one byte or of several.
std::string_view firstCharacter(std::string_view rest) {
  std::size_t size = 1;
  while (size < rest.size() && opc::isUtf8Continuation(rest[size])) ++size;
  return rest.substr(0, size);
}

std::string messageOfValue(std::string_view rest) {
  constexpr std::string_view kTypographic = "“”„‟‘’‚";
  const std::string_view first = firstCharacter(rest);
  if (first.size() > 1 && contains(kTypographic, first)) {
    return "the quote " + std::string(first) + " does not begin a string: write \"";
  }
  return "expected a value: a string stands between quotes, as in \"text\"";
}

}  // namespace

std::string tomlMessage(std::string_view description, std::string_view text, Position position) {
  const std::string_view rest = restFrom(text, position);
  const bool isOfString =
      contains(description, "parsing string") || contains(description, "literal string");
  const bool isAtEnd = contains(description, "end-of-file");
  if (isOfString && isAtEnd) return "the string is not closed: its closing quotes are missing";
  if (isOfString && contains(description, "control characters")) {
    if (isAtLineEnd(rest)) return "the string is not closed: its closing quote is missing";
    return "a string cannot contain control characters, except for tabs";
  }
  if (isAtEnd && contains(description, "parsing array")) return "the array is not closed by ']'";
  if (isAtEnd && contains(description, "inline table")) return "the table is not closed by '}'";
  if (contains(description, "could not determine value type")) return messageOfValue(rest);
  if (contains(description, "expected value, saw") && isAtLineEnd(rest)) {
    return "the value is missing";
  }
  std::string why(description);
  if (!why.empty()) why.front() = opc::toLowerAscii(why.front());
  return why;
}

}  // namespace addon::project::detail
