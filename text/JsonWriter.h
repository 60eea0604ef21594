// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace text {

/// Writes JSON text piece by piece, in the order of the calls, without a tree in memory.
class JsonWriter {
 public:
  enum class Layout { Compact, Indented };
  /// What becomes a \u escape: what JSON requires, or also what a terminal would act on, U+007F to
  /// U+009F and the characters that change the direction of text.
  enum class Escapes { Required, ForTerminals };

  /// Appends to `text`, which may be emptied between calls.
  explicit JsonWriter(std::string& text, Layout layout = Layout::Indented,
                      Escapes escapes = Escapes::ForTerminals)
      : text_(text), isIndented_(layout == Layout::Indented), escapes_(escapes) {}

  void beginObject() { begin('{'); }
  void endObject() { end('}'); }
  void beginArray() { begin('['); }
  void endArray() { end(']'); }
  void key(std::string_view name);

  void null();
  void value(std::string_view utf8);
  void value(const char* utf8) { value(std::string_view(utf8)); }
  /// Lone surrogates become \u escapes, so that nothing is lost.
  void value(std::u16string_view text);
  void value(std::uint64_t number);
  void value(bool flag);
  /// The shortest text that reads back the same. The number must be finite.
  void value(double number);
  /// null for nothing, and for the empty text.
  void textOrNull(std::string_view utf8);

  template <typename Value>
  void member(std::string_view name, const Value& content) {
    key(name);
    value(content);
  }

 private:
  void begin(char bracket);
  void end(char bracket);
  void startValue();
  void breakLine();
  void append(std::string_view utf8);

  std::string& text_;
  bool isIndented_;
  Escapes escapes_;
  bool isAfterKey_ = false;
  std::vector<bool> hasValues_;  // of each open bracket
};

}  // namespace text
