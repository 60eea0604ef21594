// SPDX-License-Identifier: MIT
#include "opc/Text.h"

#include <gtest/gtest.h>

#include "opc/Exception.h"

namespace opc {
namespace {

using std::string_literals::operator""s;

constexpr char16_t kHigh = 0xD83D;
constexpr char16_t kLow = 0xDE00;

TEST(Text, LiteralsAndAsciiTextConvertBothWays) {
  EXPECT_EQ(toStringFromASCIIStringLiteral("Korvan Toolbox"), u"Korvan Toolbox");
  EXPECT_EQ(toStringFromASCIIStringLiteral(""), u"");
  EXPECT_EQ(toASCIIString(u"a\u007F\u0080\u00E9\U0001F600"), "a\x7F????");
  EXPECT_EQ(toASCIIString(u""), "");
}

TEST(Text, EveryCodePointSurvivesUtf8) {
  std::u16string text;
  for (char32_t point = 0; point <= 0x10FFFF; point += point < 0x3000 ? 1 : 37) {
    if (point >= 0xD800 && point < 0xE000) continue;
    if (point < 0x10000) {
      text += static_cast<char16_t>(point);
    } else {
      text += static_cast<char16_t>(0xD800 + ((point - 0x10000) >> 10));
      text += static_cast<char16_t>(0xDC00 + ((point - 0x10000) & 0x3FF));
    }
  }

  const std::string bytes = toUtf8(text);

  EXPECT_TRUE(isUtf8(bytes));
  EXPECT_EQ(fromUtf8(bytes), text);
  EXPECT_EQ(toUtf8ForDisplay(text), bytes);
}

TEST(Text, EmptyTextConvertsToEmptyText) {
  EXPECT_EQ(toUtf8(std::u16string_view()), "");
  EXPECT_EQ(fromUtf8(std::string_view()), u"");
  EXPECT_EQ(toUtf8ForDisplay(std::u16string_view()), "");
  EXPECT_TRUE(isUtf8(std::string_view()));
}

class LoneSurrogate : public testing::TestWithParam<std::u16string> {};

TEST_P(LoneSurrogate, IsAnErrorThatQuotesTheText) {
  try {
    toUtf8(GetParam());
    FAIL() << "it was converted";
  } catch (const Exception& fault) {
    EXPECT_EQ(fault.code(), ErrorCode::InvalidText);
    EXPECT_NE(std::string(fault.what()).find("\xEF\xBF\xBD"), std::string::npos);
  }
}

TEST_P(LoneSurrogate, IsShownAsAReplacementCharacter) {
  EXPECT_NE(toUtf8ForDisplay(GetParam()).find("\xEF\xBF\xBD"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Texts, LoneSurrogate,
                         testing::Values(std::u16string{kHigh}, std::u16string{kLow},
                                         std::u16string{kLow, kHigh}, std::u16string{u'a', kHigh},
                                         std::u16string{kHigh, u'a'},
                                         std::u16string{kHigh, kHigh, kLow}));

struct Bytes {
  std::string text;
  std::size_t fault;
};

class InvalidUtf8 : public testing::TestWithParam<Bytes> {};

TEST_P(InvalidUtf8, IsFoundAndRefused) {
  EXPECT_FALSE(isUtf8(GetParam().text));
  EXPECT_EQ(findUtf8Fault(GetParam().text), GetParam().fault);
  EXPECT_THROW(fromUtf8(GetParam().text), Exception);
}

INSTANTIATE_TEST_SUITE_P(Texts, InvalidUtf8,
                         testing::Values(Bytes{"\x80", 0}, Bytes{"a\xBF", 1}, Bytes{"\xC0\x80", 0},
                                         Bytes{"\xC1\xBF", 0}, Bytes{"\xE0\x9F\xBF", 0},
                                         Bytes{"\xED\xA0\x80", 0}, Bytes{"\xED\xBF\xBF", 0},
                                         Bytes{"\xF0\x8F\xBF\xBF", 0}, Bytes{"\xF4\x90\x80\x80", 0},
                                         Bytes{"\xF8\x88\x80\x80\x80", 0}, Bytes{"\xFE", 0},
                                         Bytes{"\xFF", 0}, Bytes{"\xC3", 0}, Bytes{"\xE2\x82", 0},
                                         Bytes{"\xF0\x9F\x98", 0}, Bytes{"\xE2(\xA1", 0},
                                         Bytes{"eight or more ASCII letters\xE9", 27},
                                         Bytes{"\xC3\xA9 12345678 \xC3\xA9\xC3", 14}));

TEST(Text, FindsNoFaultInUtf8OfAnyLength) {
  for (std::size_t ascii = 0; ascii < 20; ++ascii) {
    const std::string text =
        std::string(ascii, 'x') + "\xC3\xA9\xF0\x9F\x98\x80" + std::string(ascii, 'y') + "\0"s;
    EXPECT_EQ(findUtf8Fault(text), std::string::npos) << ascii;
  }
}

TEST(Text, AMessageShowsOnlyTheBeginningOfALongText) {
  try {
    fromUtf8(std::string(1000000, 'x') + "\xFF");
    FAIL() << "it was converted";
  } catch (const Exception& fault) {
    EXPECT_LT(std::string(fault.what()).size(), 400u);
  }
  try {
    toUtf8(std::u16string(1000000, u'x') + kHigh);
    FAIL() << "it was converted";
  } catch (const Exception& fault) {
    EXPECT_LT(std::string(fault.what()).size(), 400u);
  }
}

TEST(Text, PrintableEscapesControlsAndBrokenBytesOnly) {
  EXPECT_EQ(printable("plain \xC3\xA9 \xF0\x9F\x98\x80"), "plain \xC3\xA9 \xF0\x9F\x98\x80");
  EXPECT_EQ(printable("\n\r\t\0\x1b\x7f"s), "\\n\\r\\t\\x00\\x1b\\x7f");
  EXPECT_EQ(printable("\xC2\x80\xC2\x9F\xC2\xA0"), "\\x80\\x9f\xC2\xA0");
  EXPECT_EQ(printable("a\xFF\xC3(b"), "a\\xff\\xc3(b");
}

TEST(Text, ShowsWhatTurnsTheDirectionOfTextAsEscapes) {
  EXPECT_EQ(printable("evil\u202Egnp.exe"), "evil\\u202egnp.exe");
  EXPECT_EQ(printable("\u061C\u200E\u200F\u202A\u202D\u2066\u2069"),
            "\\u061c\\u200e\\u200f\\u202a\\u202d\\u2066\\u2069");
  EXPECT_EQ(printable("\u2027\u202F\u2065\u206A\u061D"), "\u2027\u202F\u2065\u206A\u061D");
}

TEST(Text, ShowsWhatCannotBeSeenAsEscapes) {
  EXPECT_EQ(printable("\u2028\u2029\u00AD\u200B\u200D\u200F\u2060\uFEFF"),
            "\\u2028\\u2029\\xad\\u200b\\u200d\\u200f\\u2060\\ufeff");
  EXPECT_EQ(printable("\U000E0000a\U000E007F"), "\\U000e0000a\\U000e007f");
  EXPECT_EQ(printable("\u00AE\u200A\u2061\uFEFE\U000E0080"), "\u00AE\u200A\u2061\uFEFE\U000E0080");
}

TEST(Text, ComparesUtf8AsUtf16WouldCompare) {
  const std::u16string texts[] = {
      u"",       u"a",          u"ab",         u"b",          u"\u007F",  u"\u00E9",
      u"\u07FF", u"\u0800",     u"\uD7FF",     u"\uE000",     u"\uEFFF",  u"\uF000",
      u"\uFFFD", u"\U00010000", u"\U0001F600", u"\U0010FFFF", u"\uE000a", u"\U00010000a"};
  for (const std::u16string& a : texts) {
    for (const std::u16string& b : texts) {
      const int order = compareByCodeUnits(toUtf8(a), toUtf8(b));
      EXPECT_EQ(order < 0, a < b) << toUtf8(a) << " and " << toUtf8(b);
      EXPECT_EQ(order > 0, a > b) << toUtf8(a) << " and " << toUtf8(b);
    }
  }
}

TEST(Text, KnowsLettersDigitsAndBlanksOfAsciiOnly) {
  std::string letters, digits, blanks;
  for (int byte = 0; byte < 256; ++byte) {
    const char c = static_cast<char>(byte);
    if (isAsciiLetter(c)) letters += c;
    if (isAsciiDigit(c)) digits += c;
    if (isAsciiSpace(c)) blanks += c;
    EXPECT_EQ(isAsciiLetterOrDigit(c), isAsciiLetter(c) || isAsciiDigit(c)) << byte;
  }

  EXPECT_EQ(letters, "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz");
  EXPECT_EQ(digits, "0123456789");
  EXPECT_EQ(blanks, "\t\n\v\f\r ");
}

TEST(Text, LowersOnlyAsciiLetters) {
  EXPECT_EQ(toLowerAscii("AZaz@[`{09\xC3\x89"), "azaz@[`{09\xC3\x89");
}

}  // namespace
}  // namespace opc
