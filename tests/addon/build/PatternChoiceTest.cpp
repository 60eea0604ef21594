// SPDX-License-Identifier: MIT
#include "addon/build/PatternChoice.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

namespace {

using addon::build::PatternChoice;
using Patterns = std::vector<std::string>;

struct Case {
  Patterns patterns;
  std::string path;
  bool isChosen;

  friend std::ostream& operator<<(std::ostream& stream, const Case& shown) {
    for (const std::string& pattern : shown.patterns) stream << pattern << ' ';
    return stream << "on " << shown.path;
  }
};

class PatternChoices : public testing::TestWithParam<Case> {};

TEST_P(PatternChoices, AreMadeByTheLastThatSpeaksOfThePath) {
  PatternChoice choice(GetParam().patterns);

  EXPECT_EQ(choice.chooses(GetParam().path, false), GetParam().isChosen);
}

INSTANTIATE_TEST_SUITE_P(
    All, PatternChoices,
    testing::Values(Case{{}, "a", false}, Case{{"b"}, "a", false}, Case{{"!a"}, "a", false},
                    // of a folder and what is in it, whichever comes last
                    Case{{"n/", "!n/g"}, "n/g", false}, Case{{"!n/g", "n/"}, "n/g", true},
                    Case{{"n", "!g"}, "n/g", false}, Case{{"!g", "n"}, "n/g", true},
                    Case{{"!g", "n/**"}, "n/g", true}, Case{{"g", "!n"}, "n/g", false},
                    // of several folders above
                    Case{{"a/b/", "!a/"}, "a/b/c/d", false}, Case{{"!a/", "a/b/"}, "a/b/c/d", true},
                    Case{{"a/", "!a/b/", "c"}, "a/b/c/d", true},
                    Case{{"a/", "!a/b/", "c"}, "a/b/d", false},
                    // a pattern for folders is none for a file, but for what is in a folder
                    Case{{"g/"}, "n/g", false}, Case{{"n/"}, "n/g", true}));

TEST(PatternChoice, OfAPathDoesNotDependOnThoseBefore) {
  const Patterns patterns{"*.m", "!a/", "a/b/"};
  const Patterns paths{"a/b/x", "a/b.m", "a/bc/x", "a/b/c/d/x", "x.m", "ab/x.m", "a/b/y", "a/x.m"};
  PatternChoice choice(patterns);

  for (int round = 0; round < 2; ++round) {
    for (const std::string& path : paths) {
      EXPECT_EQ(choice.chooses(path, false), PatternChoice(patterns).chooses(path, false)) << path;
    }
  }
}

TEST(PatternChoice, NamesTheFirstPatternThatMatchedNothing) {
  PatternChoice choice({"a/", "!a/b", "!b", "c", "d"});

  choice.chooses("a/b", false);

  ASSERT_NE(choice.unused(), nullptr);
  EXPECT_EQ(*choice.unused(), "c");
}

TEST(PatternChoice, CountsAPatternAsUsedThatALaterOneOverrules) {
  PatternChoice choice({"b", "!a/b", "a/"});

  choice.chooses("a/c", false);
  choice.chooses("a/b", false);

  EXPECT_EQ(choice.unused(), nullptr);
}

}  // namespace
