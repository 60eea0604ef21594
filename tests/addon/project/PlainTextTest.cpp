// SPDX-License-Identifier: MIT
#include "addon/project/PlainText.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using addon::project::manifestTextFault;
using addon::project::xmlTextFault;

struct Refused {
  std::string text;
  std::string why;
};

class TextsForNeither : public testing::TestWithParam<Refused> {};

TEST_P(TextsForNeither, AreRefusedWithTheCharacter) {
  EXPECT_EQ(manifestTextFault(GetParam().text), GetParam().why);
  EXPECT_EQ(xmlTextFault(GetParam().text), GetParam().why);
}

INSTANTIATE_TEST_SUITE_P(
    All, TextsForNeither,
    testing::Values(Refused{"a\xFF", "it is not UTF-8"},
                    Refused{std::string("a\0b", 3), "it contains the control character U+0000"},
                    Refused{"\x01", "it contains the control character U+0001"},
                    Refused{"a\fb", "it contains the control character U+000C"},
                    Refused{"a\x1F", "it contains the control character U+001F"},
                    Refused{"\xEF\xBF\xBE", "it contains U+FFFE, which XML cannot carry"},
                    Refused{"x\xEF\xBF\xBF", "it contains U+FFFF, which XML cannot carry"}));

class TextsForPackagesAlone : public testing::TestWithParam<Refused> {};

TEST_P(TextsForPackagesAlone, AreRefusedOnlyForAManifest) {
  EXPECT_EQ(manifestTextFault(GetParam().text), GetParam().why);
  EXPECT_EQ(xmlTextFault(GetParam().text), "");
}

INSTANTIATE_TEST_SUITE_P(
    All, TextsForPackagesAlone,
    testing::Values(Refused{"a\x7F", "it contains the control character U+007F"},
                    Refused{"\xC2\x80", "it contains the control character U+0080"},
                    Refused{"\xC2\x9F", "it contains the control character U+009F"}));

TEST(PlainText, MayContainLineEndsAndTabs) {
  const std::string text = "a\tb\r\nc \xC2\xA0\xC3\xA9\xEF\xBF\xBD\xF0\x9F\x8C\x8A";

  EXPECT_EQ(manifestTextFault(text), "");
  EXPECT_EQ(xmlTextFault(text), "");
}

}  // namespace
