// SPDX-License-Identifier: MIT
#include "addon/gallery/Words.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using addon::gallery::initialOf;
using addon::gallery::splitAtBlanks;
using addon::gallery::wordsOf;

TEST(Words, AreInLowerCaseWithABlankInFrontOfEach) {
  EXPECT_EQ(wordsOf("Wave-Tools, 2nd  Edition!"), " wave tools 2nd edition");
  EXPECT_EQ(wordsOf(" -- "), "");
}

TEST(Words, HaveNoAccentsHoweverTheyAreComposed) {
  EXPECT_EQ(wordsOf("\u00c9tude e\u0301tude"), " etude etude");
  EXPECT_EQ(wordsOf("\u0130stanbul"), " istanbul");
}

TEST(Words, KeepMarksThatAreNotAccents) {
  const std::string kana = "\u304c";
  const std::string hindi = "\u0939\u093f\u0928\u094d\u0926\u0940";

  EXPECT_EQ(wordsOf(kana), " " + kana);
  EXPECT_EQ(wordsOf(hindi), " " + hindi);
}

TEST(Words, OfGreekHaveOneSigma) {
  EXPECT_EQ(wordsOf("\u039f\u0394\u039f\u03a3"), wordsOf("\u03bf\u03b4\u03bf\u03c2"));
}

TEST(Words, HoldNothingThatMeansSomethingInAScript) {
  EXPECT_EQ(wordsOf("`${x}\\\"'</script>\u2028\n\xE2\x80\xAE|\xFF"), " x script");
}

TEST(Words, BeginWithAnInitial) {
  EXPECT_EQ(initialOf(wordsOf("(\u00f6ko)")), "O");
  EXPECT_EQ(initialOf(wordsOf("\U00010428x")), "\U00010400");
  EXPECT_EQ(initialOf(wordsOf("?")), "");
}

TEST(Words, ThatAreEnteredHaveBlanksOfAnyScriptBetweenThem) {
  using Parts = std::vector<std::string>;
  EXPECT_EQ(splitAtBlanks(" a-b\tc\u3000\u00e9\u00a0\U0001F389\u2028d\n"),
            (Parts{"a-b", "c", "\u00e9", "\U0001F389", "d"}));
  EXPECT_EQ(splitAtBlanks(" \u3000"), Parts{});
  EXPECT_EQ(splitAtBlanks(""), Parts{});
}

}  // namespace
