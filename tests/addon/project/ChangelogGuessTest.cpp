// SPDX-License-Identifier: MIT
#include "addon/project/ChangelogGuess.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using addon::project::revisionsOf;

struct Heading {
  const char* line;
  const char* version;  // "" when it is not a revision
  const char* date;
};

class Headings : public testing::TestWithParam<Heading> {};

TEST_P(Headings, AreReadAsVersionAndDate) {
  const Heading& heading = GetParam();

  const auto revisions = revisionsOf(std::string(heading.line) + "\n\ntext\n");

  if (*heading.version == '\0') {
    EXPECT_TRUE(revisions.empty()) << heading.line;
    return;
  }
  ASSERT_EQ(revisions.size(), 1u) << heading.line;
  EXPECT_EQ(revisions[0].version, heading.version);
  EXPECT_EQ(revisions[0].date, heading.date);
  EXPECT_EQ(revisions[0].description, "text");
}

INSTANTIATE_TEST_SUITE_P(
    All, Headings,
    testing::Values(
        Heading{"## [1.2] - 2026-02-01", "1.2", "2026-02-01"},
        Heading{"## 1.2 - 2026-02-01", "1.2", "2026-02-01"},
        Heading{"## 1.2 (2026-02-01)", "1.2", "2026-02-01"},
        Heading{"##   v1.2.3 / 2026-02-01", "1.2.3", "2026-02-01"},
        Heading{"## Version 1.2", "1.2", ""},
        Heading{"## [1.2](https://x/1.2) (2026-02-01)", "1.2", "2026-02-01"},
        Heading{"## [1.2-rc.1+5] - 2026-02-01 [YANKED]", "1.2-rc.1+5", "2026-02-01"},
        Heading{"## 1.2: March 2026", "1.2", "March 2026"},
        Heading{"## 1.2 (March 2026):", "1.2", "March 2026"},
        Heading{"## 1.2. March 2026", "1.2", "March 2026"},
        Heading{"## v1.2-_. (2026-02-01)", "1.2", "2026-02-01"},
        Heading{"## 1.2 - the one with the windows", "1.2", ""},
        Heading{"## 1.2 - 2026-13-45", "1.2", ""}, Heading{"## 1.2 - 2026-00-10", "1.2", ""},
        Heading{"## 1.2 (2026-04-31)", "1.2", ""}, Heading{"## 1.2 - 2026-02-29", "1.2", ""},
        Heading{"## 1.2 - 2024-02-29", "1.2", "2024-02-29"},
        Heading{"## 1.2 - 2026-13-45, truly 2026-02-01", "1.2", "2026-02-01"},
        Heading{"## 2026-13-45", "", ""}, Heading{"## [Unreleased]", "", ""},
        Heading{"## Notes", "", ""}, Heading{"## [1.2", "", ""}, Heading{"## 2026-02-01", "", ""},
        Heading{"### [1.2] - 2026-02-01", "", ""}, Heading{"# 1.2", "", ""},
        Heading{"##1.2", "", ""}, Heading{"## ", "", ""}, Heading{"## [1.2](", "1.2", ""}));

TEST(ChangelogGuess, ARevisionHasTheTextBelowItUpToTheNextHeading) {
  const auto revisions = revisionsOf(
      "# Changes\n\nAll of them.\n\n## [2.0] - 2026-02-01\n\n### Added\n- a\n\n- b\n\n"
      "## [1.0] - 2025-02-01\n\nFirst\n\n[2.0]: https://x/2.0\n[1.0]: https://x/1.0\n");

  ASSERT_EQ(revisions.size(), 2u);
  EXPECT_EQ(revisions[0].description, "### Added\n- a\n\n- b");
  EXPECT_EQ(revisions[1].description, "First");
}

TEST(ChangelogGuess, AHeadingWithoutAVersionEndsTheRevisionAboveIt) {
  const auto revisions = revisionsOf("## 1.0\na\n## Thanks\nb\n");

  ASSERT_EQ(revisions.size(), 1u);
  EXPECT_EQ(revisions[0].description, "a");
}

TEST(ChangelogGuess, HeadingsInCodeAreIgnored) {
  const auto revisions = revisionsOf("## 1.0\n```\n## 0.9\n```\n");

  ASSERT_EQ(revisions.size(), 1u);
  EXPECT_EQ(revisions[0].description, "```\n## 0.9\n```");
}

TEST(ChangelogGuess, AFenceIsThreeMarksOrMore) {
  for (const std::string fence :
       {"```", "~~~", "  `````", "```text", "``` {.text #id}", "~~~ `a`"}) {
    EXPECT_EQ(revisionsOf("## 1.0\n" + fence + "\n## 0.9\n").size(), 1u) << fence;
  }
}

TEST(ChangelogGuess, ALineThatOnlyContainsSuchMarksIsNotAFence) {
  for (const std::string line : {"", "``", "~~", "a ```", "~~`", "```a```", "``` a `b` c", "`"}) {
    EXPECT_EQ(revisionsOf("## 1.0\n" + line + "\n## 0.9\n").size(), 2u) << line;
  }
}

TEST(ChangelogGuess, LineEndsOfOtherSystemsBecomeLineFeeds) {
  const auto revisions = revisionsOf("## 1.0\r\na\r\nb\r\n");

  ASSERT_EQ(revisions.size(), 1u);
  EXPECT_EQ(revisions[0].description, "a\nb");
}

}  // namespace
