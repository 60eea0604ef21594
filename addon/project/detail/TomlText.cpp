// SPDX-License-Identifier: MIT
#include "addon/project/detail/TomlText.h"

#include <array>
#include <cstdio>

#include "addon/project/PlainText.h"
#include "opc/Text.h"

namespace addon::project::detail {

namespace {

constexpr std::size_t kLineWidth = 100;

/// Whether a string must escape it: control characters except tab, the quote, the backslash.
void appendEscaped(char c, std::string& result) {
  const auto byte = static_cast<unsigned char>(c);
  if (c == '"' || c == '\\') {
    result.append({'\\', c});
  } else if (c == '\n') {
    result += "\\n";
  } else if (c == '\r') {
    result += "\\r";
  } else if (c != '\t' && (byte < 0x20 || byte == 0x7F)) {
    std::array<char, 8> code{};
    std::snprintf(code.data(), code.size(), "\\u%04X", byte);
    result += code.data();
  } else {
    result += c;
  }
}

/// In a block, a quote needs an escape only if it could be one of the three that end it.
void appendBlockLine(std::string_view line, std::string& result) {
  for (std::size_t at = 0; at < line.size(); ++at) {
    const bool isAmongQuotes =
        at + 1 == line.size() || line[at + 1] == '"' || (at > 0 && line[at - 1] == '"');
    if (line[at] == '"' && !isAmongQuotes) {
      result += '"';
    } else {
      appendEscaped(line[at], result);
    }
  }
}

}  // namespace

std::string tomlString(std::string_view text) {
  std::string result = "\"";
  for (const char c : text) appendEscaped(c, result);
  return result + '"';
}

std::string tomlBlock(std::string_view text) {
  if (text.find_first_of("\r\n") == text.npos) return tomlString(text);
  // A line end directly after the quotes is ignored.
  std::string result = "\"\"\"\n";
  bool isFirst = true;
  for (const std::string_view line : linesOf(text)) {
    if (!isFirst) result += '\n';
    isFirst = false;
    appendBlockLine(line, result);
  }
  if (text.ends_with('\n') || text.ends_with('\r')) result += '\n';
  return result + "\"\"\"";
}

std::string tomlArray(const std::vector<std::string>& texts) {
  std::string line;
  for (const std::string& text : texts) line += (line.empty() ? "" : ", ") + tomlString(text);
  if (line.size() <= kLineWidth) return "[" + line + "]";
  std::string result = "[\n";
  for (const std::string& text : texts) result += "  " + tomlString(text) + ",\n";
  return result + "]";
}

std::string tomlComment(std::string_view text) {
  return "# " + opc::printable(text) + "\n";
}

}  // namespace addon::project::detail
