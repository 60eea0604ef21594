// SPDX-License-Identifier: MIT
#include "addon/catalogue/SitePaths.h"

#include <gtest/gtest.h>

#include <string>

#include "text/Sha256.h"

namespace {

using addon::catalogue::keyOf;
using addon::catalogue::pageFolder;
using addon::catalogue::pathName;
using addon::catalogue::shardOf;

TEST(SitePaths, PlainTextsStayAsTheyAre) {
  for (const std::string name : {"0c3a0d9e-5b7a-4a53-9c58-6f0d2f4f8a11", "1.2.3", "v1_0", "-"}) {
    EXPECT_EQ(pathName(name), name);
  }
  EXPECT_EQ(pathName(std::string(100, 'a')), std::string(100, 'a'));
}

TEST(SitePaths, NoOtherTextGetsIntoAPath) {
  const std::string evil[] = {"",
                              ".",
                              "..",
                              ".hidden",
                              "../../etc",
                              "a/b",
                              "a\\b",
                              "a b",
                              "a\nb",
                              "a?b",
                              "a#b",
                              "a%2fb",
                              "<b>",
                              "gr\xC3\xB6\xC3\x9F"
                              "e",
                              std::string("a\0b", 3),
                              std::string(101, 'a')};
  for (const std::string& text : evil) EXPECT_EQ(pathName(text), text::sha256Of(text)) << text;
}

TEST(SitePaths, ATextThatLooksLikeAHashHasAnotherPath) {
  const std::string hash = text::sha256Of("1.0 beta");

  EXPECT_NE(pathName(hash), pathName("1.0 beta"));
}

TEST(SitePaths, CaseOfAGuidDoesNotCount) {
  EXPECT_EQ(keyOf("0C3A"), keyOf("0c3a"));
  EXPECT_EQ(pageFolder("0C3A", "1.0A"), "pages/0c3a/1.0A");
  EXPECT_EQ(shardOf(keyOf("ABC")), text::sha256Of("abc").substr(0, 2));
}

}  // namespace
