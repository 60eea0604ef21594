// SPDX-License-Identifier: MIT
#include "fl/i18n/codecvt.h"

#include <gtest/gtest.h>

#include "opc/Exception.h"

namespace fl::i18n {
namespace {

using std::string_literals::operator""s;

TEST(Codecvt, TextComesBackFromUtf8) {
  const std::u16string text =
      u"a\u0000\u00E9\u20AC\uFEFF\U0001F600"s + std::u16string(100000, u'\u20AC');
  const codecvt_ustring_to_string toBytes("UTF-8", true);
  const codecvt_string_to_ustring toText("UTF-8", true);

  const std::string bytes = toBytes.convert(text);

  EXPECT_EQ(bytes.substr(0, 4), "a\0\xC3\xA9"s);
  EXPECT_EQ(toText.convert(bytes), text);
}

TEST(Codecvt, EmptyTextConverts) {
  EXPECT_EQ(codecvt_ustring_to_string("UTF-8", true).convert({}), "");
  EXPECT_EQ(codecvt_string_to_ustring("UTF-8", true).convert({}), u"");
}

TEST(Codecvt, OneConverterConvertsManyTimes) {
  const codecvt_ustring_to_string toBytes("UTF-8", true);

  EXPECT_THROW(toBytes.convert(std::u16string{0xD800}), opc::Exception);
  EXPECT_EQ(toBytes.convert(u"\u00E9"), "\xC3\xA9");
}

TEST(Codecvt, OtherEncodingsConvert) {
  EXPECT_EQ(codecvt_ustring_to_string("ISO-8859-1", true).convert(u"\u00E9"), "\xE9");
  EXPECT_EQ(codecvt_string_to_ustring("windows-1252", true).convert("\x80"), u"\u20AC");
  EXPECT_EQ(codecvt_ustring_to_string("UTF-32BE", true).convert(u"\U0001F600"), "\0\x01\xF6\0"s);
  EXPECT_EQ(codecvt_ustring_to_string("ISO-2022-JP", true).convert(u"\u3042a\u3042a").size(), 18u);
}

TEST(Codecvt, AnUnknownEncodingIsRefusedAtOnce) {
  for (const std::string& name : {""s, "no such encoding"s, "UTF-8\0x"s}) {
    try {
      const codecvt_ustring_to_string converter(name, true);
      ADD_FAILURE() << name << " was taken";
    } catch (const opc::Exception& fault) {
      EXPECT_EQ(fault.code(), opc::ErrorCode::InvalidArgument);
    }
    EXPECT_THROW(codecvt_string_to_ustring(name, false), opc::Exception);
  }
}

class UnpairedSurrogate : public testing::TestWithParam<std::u16string> {};

TEST_P(UnpairedSurrogate, IsAnErrorWhenStrictAndElseReplaced) {
  try {
    codecvt_ustring_to_string("UTF-8", true).convert(GetParam());
    FAIL() << "it was converted";
  } catch (const opc::Exception& fault) {
    EXPECT_EQ(fault.code(), opc::ErrorCode::InvalidText);
  }
  EXPECT_NE(codecvt_ustring_to_string("UTF-8", false).convert(GetParam()).find("\xEF\xBF\xBD"),
            std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Texts, UnpairedSurrogate,
                         testing::Values(std::u16string{0xD800}, std::u16string{0xDC00},
                                         std::u16string{u'a', 0xDBFF}, std::u16string{0xD800, u'a'},
                                         std::u16string{0xDC00, 0xD800}));

class BrokenBytes : public testing::TestWithParam<std::string> {};

TEST_P(BrokenBytes, AreAnErrorWhenStrictAndElseReplaced) {
  try {
    codecvt_string_to_ustring("UTF-8", true).convert(GetParam());
    FAIL() << "they were converted";
  } catch (const opc::Exception& fault) {
    EXPECT_EQ(fault.code(), opc::ErrorCode::InvalidText);
  }
  EXPECT_NE(codecvt_string_to_ustring("UTF-8", false).convert(GetParam()).find(u'\uFFFD'),
            std::u16string::npos);
}

INSTANTIATE_TEST_SUITE_P(Texts, BrokenBytes,
                         testing::Values("\xFF", "a\xC3", "\xE2\x82", "\xC0\xAF", "\xED\xA0\x80",
                                         "\xF4\x90\x80\x80", "\xC3("));

TEST(Codecvt, WhatAnEncodingLacksIsAnErrorWhenStrictAndElseReplaced) {
  EXPECT_THROW(codecvt_ustring_to_string("US-ASCII", true).convert(u"a\u00E9"), opc::Exception);
  EXPECT_EQ(codecvt_ustring_to_string("US-ASCII", false).convert(u"a\u00E9b").size(), 3u);
}

}  // namespace
}  // namespace fl::i18n
