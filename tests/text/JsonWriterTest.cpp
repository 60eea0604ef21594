// SPDX-License-Identifier: MIT
#include "text/JsonWriter.h"

#include <gtest/gtest.h>

namespace {

using text::JsonWriter;

std::string json(std::string_view value,
                 JsonWriter::Escapes escapes = JsonWriter::Escapes::ForTerminals) {
  std::string result;
  JsonWriter(result, JsonWriter::Layout::Compact, escapes).value(value);
  return result;
}

TEST(JsonWriter, EscapesControlCharacters) {
  EXPECT_EQ(json("\x01\x1f\"\\\n\t\r"), R"("\u0001\u001f\"\\\n\t\r")");
  EXPECT_EQ(json("a\x7f"
                 "b\u0080\u009b\u009f"),
            R"("a\u007fb\u0080\u009b\u009f")");
}

TEST(JsonWriter, EscapesWhatChangesTheDirectionOfText) {
  EXPECT_EQ(json("\u061C\u200E\u200F"), R"("\u061c\u200e\u200f")");
  EXPECT_EQ(json("\u202A\u202B\u202C\u202D\u202E!"), R"("\u202a\u202b\u202c\u202d\u202e!")");
  EXPECT_EQ(json("\u2066\u2067\u2068\u2069"), R"("\u2066\u2067\u2068\u2069")");
}

TEST(JsonWriter, LeavesTheirNeighboursAlone) {
  for (const std::string text : {"~", "\u00A0", "\u00BF", "\u00DB", "\u061B", "\u061D", "\u065C",
                                 "\u200D", "\u2010", "\u2029", "\u202F", "\u2065", "\u206A",
                                 "\u209C", "\u302E", "\uD55C", "\U0001F00E", "\U000E0001"}) {
    EXPECT_EQ(json(text), "\"" + text + "\"");
  }
}

TEST(JsonWriter, EscapesThemInUtf16Too) {
  std::string result;
  JsonWriter(result, JsonWriter::Layout::Compact)
      .value(std::u16string_view(u"\u009b\xD800\u202e\U0001F600"));

  EXPECT_EQ(result, "\"\\u009b\\ud800\\u202e\U0001F600\"");
}

TEST(JsonWriter, EscapesOnlyWhatJsonRequiresIfAskedTo) {
  const std::string text = "\x7f\u009b\u202e";

  EXPECT_EQ(json(text, JsonWriter::Escapes::Required), "\"" + text + "\"");
  EXPECT_EQ(json("\x1f", JsonWriter::Escapes::Required), R"("\u001f")");
}

}  // namespace
