// SPDX-License-Identifier: MIT
#include "addon/gallery/Prose.h"

#include <gtest/gtest.h>

#include <string>

#include "addon/gallery/ProseSpans.h"

namespace {

using addon::gallery::HtmlWriter;

/// What becomes of a text, without the attributes that every block has.
std::string prose(std::string_view text, std::size_t level = 3) {
  std::string page;
  HtmlWriter html([&](std::string_view piece) { page += piece; });
  addon::gallery::writeProse(html, text, level);
  html.flush();
  for (const std::string_view noise : {" dir=\"auto\"", " tabindex=\"0\"", " class=\"lines\""}) {
    for (std::size_t at = page.find(noise); at != std::string::npos; at = page.find(noise)) {
      page.erase(at, noise.size());
    }
  }
  return page;
}

std::string spans(std::string_view text) {
  std::string page;
  HtmlWriter html([&](std::string_view piece) { page += piece; });
  addon::gallery::writeSpans(html, text);
  html.flush();
  return page;
}

TEST(Prose, BlankLinesSeparateParagraphsAndLinesStayLines) {
  EXPECT_EQ(prose("one\ntwo\n\n \t\nthree"), "<p>one\ntwo</p>\n\n\n<p>three</p>\n");
  EXPECT_EQ(prose("one\r\ntwo\r\rthree\r\n"), "<p>one\ntwo</p>\n\n<p>three</p>\n");
  EXPECT_EQ(prose(""), "");
}

TEST(Prose, HeadingsGoDownStepByStep) {
  EXPECT_EQ(prose("# a\n### b\n## c\n# d"), "<h3>a</h3>\n<h4>b</h4>\n<h4>c</h4>\n<h3>d</h3>\n");
  EXPECT_EQ(prose("### a\n# b", 4), "<h4>a</h4>\n<h4>b</h4>\n");
  EXPECT_EQ(prose("# 1\n## 2\n### 3\n#### 4\n##### 5"),
            "<h3>1</h3>\n<h4>2</h4>\n<h5>3</h5>\n<h6>4</h6>\n<h6>5</h6>\n");
  EXPECT_EQ(prose("## Closed ##"), "<h3>Closed</h3>\n");
}

TEST(Prose, WhatOnlyLooksLikeAHeadingIsText) {
  for (const std::string text : {"#hash", "####### seven", "#", "# ", "C# and F#"}) {
    EXPECT_EQ(prose(text).substr(0, 3), "<p>") << text;
  }
}

TEST(Prose, ListsKeepTheirNumbersAndContinuationLines) {
  EXPECT_EQ(prose("- one\n- two\n  goes on\n\nend"),
            "<ul><li>one</li><li>two\n  goes on</li></ul>\n\n<p>end</p>\n");
  EXPECT_EQ(prose("3. three\n7) seven"),
            "<ol><li value=\"3\">three</li><li value=\"7\">seven</li></ol>\n");
  EXPECT_EQ(prose("* a\n1. b"), "<ul><li>a</li></ul>\n<ol><li value=\"1\">b</li></ol>\n");
}

TEST(Prose, WhatOnlyLooksLikeAListIsText) {
  for (const std::string text : {"-5 degrees", "2024. A year", "1.5 times", "- ", "-- dash"}) {
    EXPECT_EQ(prose(text).substr(0, 3), "<p>") << text;
  }
}

TEST(Prose, ABlockOfCodeIsKeptToTheLetter) {
  EXPECT_EQ(prose("```text\n# a < b\n\n  *c*\n```\nend"),
            "<pre><code># a &lt; b\n\n  *c*\n</code></pre>\n<p>end</p>\n");
  EXPECT_EQ(prose("```\nnever closed"), "<pre><code>never closed\n</code></pre>\n");
}

TEST(Prose, ABlockOfCodeEndsAtItsOwnFence) {
  EXPECT_EQ(prose("~~~ text\n```\n~~~\nend"), "<pre><code>```\n</code></pre>\n<p>end</p>\n");
  EXPECT_EQ(prose("````\n```\n````"), "<pre><code>```\n</code></pre>\n");
}

TEST(Prose, CodeInsideALineIsNoBlock) {
  EXPECT_EQ(prose("```a``` is code").substr(0, 3), "<p>");
}

TEST(Prose, ATableHasAHeadAndRows) {
  EXPECT_EQ(prose("| a | `b` |\n|---|:-:|\n| 1 | x \\| y |\n|2|\n\nend"),
            "<table><thead><tr><th scope=\"col\">a</th><th scope=\"col\"><code>b</code></th></tr>"
            "</thead><tbody><tr><td>1</td><td>x | y</td></tr><tr><td>2</td></tr></tbody></table>"
            "\n\n<p>end</p>\n");
  EXPECT_EQ(prose("text\na|b\n-|-"),
            "<p>text</p>\n<table><thead><tr><th scope=\"col\">a</th><th scope=\"col\">b</th></tr>"
            "</thead><tbody></tbody></table>\n");
}

TEST(Prose, WhatOnlyLooksLikeATableIsText) {
  for (const std::string text :
       {"a | b", "a | b\nc | d", "| a |\n| - | - |", "a|b\n---", "|\n|", "a | b\n-- | -x"}) {
    EXPECT_EQ(prose(text), "<p>" + text + "</p>\n") << text;
  }
}

TEST(Prose, ARowKeepsEveryCellItHas) {
  EXPECT_EQ(prose("|a|\n|-|\n|1|2||<b>|"),
            "<table><thead><tr><th scope=\"col\">a</th></tr></thead><tbody><tr><td>1</td>"
            "<td>2</td><td></td><td>&lt;b&gt;</td></tr></tbody></table>\n");
}

TEST(Prose, LinesThatAnEditorFilledFlow) {
  const std::string filled =
      "Wave Tools makes, filters and looks at one-dimensional signals. It is\n"
      "small, has no dependencies but one, and every function works on\n"
      "columns.";
  const std::string list =
      "The first change is told in a line that is rather long, to be sure\n"
      "Short one\n"
      "The third change is told in a line of its own, and is the last one";

  EXPECT_NE(prose(filled).find("class=\"filled\""), std::string::npos);
  EXPECT_EQ(prose(list).find("class=\"filled\""), std::string::npos);
}

TEST(Prose, TwoSentencesOnTwoLinesStayOnTwoLines) {
  const std::string text =
      "The short-time spectrum takes any window, and not only a length.\nThe rest is as it was.";

  EXPECT_EQ(prose(text).find("class=\"filled\""), std::string::npos);
}

TEST(ProseSpans, SetOffCodeStrongAndEmphasisedWords) {
  EXPECT_EQ(spans("use `a < b` now"), "use <code>a &lt; b</code> now");
  EXPECT_EQ(spans("**Big** and *small*, `x`"),
            "<strong>Big</strong> and <em>small</em>, <code>x</code>");
  EXPECT_EQ(spans("(*a b*)"), "(<em>a b</em>)");
}

TEST(ProseSpans, SignsThatSetNothingOffAreText) {
  for (const std::string text : {"5 * 3 * 2", "a*b*c", "*.csv and *.wav", "** not strong **",
                                 "`open", "**", "****", "``", "*a**", "2**3 and 4**5"}) {
    EXPECT_EQ(spans(text), text);
  }
}

// Looking for the end of each one anew would take hours.
TEST(ProseSpans, ManySignsThatNothingClosesAreText) {
  std::string text;
  for (int i = 0; i < 500000; ++i) text += " *a **b";
  text += " `x";

  const std::string page = spans(text);

  EXPECT_EQ(page, text);
}

}  // namespace
