// SPDX-License-Identifier: MIT
#include "opc/model/detail/XmlCharacters.h"

#include <gtest/gtest.h>

#include <string>

using opc::model::detail::findNonXml;
using opc::model::detail::isXmlText;
using opc::model::detail::utf8Length;
using namespace std::string_view_literals;

TEST(XmlCharacters, TextIsWhatXmlCarries) {
  for (const auto text :
       {u""sv, u"a\t\n\r\u0080"sv, u"\uD7FF\uE000\uFFFD"sv, u"\U00010000"sv, u"\U0010FFFF"sv}) {
    EXPECT_TRUE(isXmlText(text));
  }
}

TEST(XmlCharacters, TheFirstForbiddenUnitIsFound) {
  const char16_t lead = 0xD800;
  const char16_t trail = 0xDC00;
  for (const char16_t unit : {u'\0', u'\x1', u'\x8', u'\xB', u'\x1F', lead, trail,
                              static_cast<char16_t>(0xFFFE), static_cast<char16_t>(0xFFFF)}) {
    EXPECT_EQ(findNonXml(std::u16string(u"ab") + unit + u"\x1"), 2u) << static_cast<int>(unit);
    EXPECT_EQ(findNonXml(std::u16string(u"\U00010000") + unit), 2u) << static_cast<int>(unit);
  }
  EXPECT_EQ(findNonXml(std::u16string{lead, lead, trail}), 0u);
  EXPECT_EQ(findNonXml(std::u16string{lead, trail, trail}), 2u);
}

TEST(XmlCharacters, LengthIsThatOfUtf8) {
  EXPECT_EQ(utf8Length(u""), 0u);
  EXPECT_EQ(utf8Length(u"a\u007F"), 2u);
  EXPECT_EQ(utf8Length(u"\u0080\u07FF"), 4u);
  EXPECT_EQ(utf8Length(u"\u0800\uFFFD"), 6u);
  EXPECT_EQ(utf8Length(u"\U00010000"), 4u);
}
