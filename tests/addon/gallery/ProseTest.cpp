// SPDX-License-Identifier: MIT
#include "addon/gallery/detail/Prose.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using addon::gallery::PageImage;
using addon::gallery::PageImages;
using addon::gallery::detail::HtmlWriter;
using addon::gallery::detail::Prose;

/// Holds one image, and one that is too large.
class OneImage final : public PageImages {
 public:
  PageImage screenshot() override { return {}; }
  PageImage file(const std::string& path) override {
    if (path == "images/a b.png") return {"data:image/png;base64,AAAA", {}};
    if (path.empty()) return {};
    return {{}, path == "large.png" ? "left out: 9 MB" : "not in the package"};
  }
};

/// The page that `write(prose)` makes, without the attributes that every block has.
template <typename Write>
std::string pageOf(const Write& write) {
  std::string page;
  HtmlWriter html([&](std::string_view piece) { page += piece; });
  OneImage images;
  Prose prose(html, images);
  write(prose);
  html.flush();
  for (const std::string_view noise : {" dir=\"auto\"", " tabindex=\"0\""}) {
    for (std::size_t at = page.find(noise); at != std::string::npos; at = page.find(noise)) {
      page.erase(at, noise.size());
    }
  }
  return page;
}

std::string prose(std::string_view text, std::size_t level = 3) {
  return pageOf([&](Prose& prose) { prose.write(text, level); });
}

std::string repeated(std::string_view text, std::size_t size) {
  std::string result;
  while (result.size() < size) result += text;
  return result;
}

const std::string kTable = "<div class=\"wide\" role=\"group\" aria-label=\"Table\"><table>";
const std::string kTableEnd = "</table></div>\n";

/// A text that is not read as CommonMark.
std::string plain(std::string_view text) {
  return "<p class=\"lines\">" + std::string(text) + "</p>\n";
}

TEST(Prose, BlankLinesSeparateParagraphs) {
  EXPECT_EQ(prose("one\ntwo\n\n \t\nthree"), "<p>one\ntwo</p>\n<p>three</p>\n");
  EXPECT_EQ(prose("one\r\ntwo\r\rthree\r\n"), "<p>one\ntwo</p>\n<p>three</p>\n");
  EXPECT_EQ(prose("one  \ntwo"), "<p>one<br>two</p>\n");
  EXPECT_EQ(prose(""), "");
  EXPECT_EQ(prose(" \n\t\n"), "");
}

TEST(Prose, HeadingsGoDownStepByStep) {
  EXPECT_EQ(prose("# a\n### b\n## c\n# d"), "<h3>a</h3>\n<h4>b</h4>\n<h4>c</h4>\n<h3>d</h3>\n");
  EXPECT_EQ(prose("### a\n# b", 4), "<h4>a</h4>\n<h4>b</h4>\n");
  EXPECT_EQ(prose("# 1\n## 2\n### 3\n#### 4\n##### 5"),
            "<h3>1</h3>\n<h4>2</h4>\n<h5>3</h5>\n<h6>4</h6>\n<h6>5</h6>\n");
  EXPECT_EQ(prose("## Closed ##"), "<h3>Closed</h3>\n");
  EXPECT_EQ(prose("Underlined\n==="), "<h3>Underlined</h3>\n");
}

TEST(Prose, TextsStartTheirHeadingsAnew) {
  const std::string page = pageOf([](Prose& prose) {
    prose.write("# a\n## b", 3);
    prose.write("## c", 4);
  });

  EXPECT_EQ(page, "<h3>a</h3>\n<h4>b</h4>\n<h4>c</h4>\n");
}

TEST(Prose, WhatOnlyLooksLikeAHeadingIsText) {
  for (const std::string text : {"#hash", "####### seven", "C# and F#"}) {
    EXPECT_EQ(prose(text).substr(0, 3), "<p>") << text;
  }
}

TEST(Prose, AnEmptyHeadingIsLeftOut) {
  EXPECT_EQ(prose("#\n# \ntext"), "\n\n<p>text</p>\n");
}

TEST(Prose, ListsKeepTheirFirstNumberAndContinuationLines) {
  EXPECT_EQ(prose("- one\n- two\n  goes on\n\nend"),
            "<ul><li>one</li><li>two\ngoes on</li></ul>\n<p>end</p>\n");
  EXPECT_EQ(prose("3. three\n7) seven"),
            "<ol start=\"3\"><li>three</li></ol>\n<ol start=\"7\"><li>seven</li></ol>\n");
  EXPECT_EQ(prose("* a\n1. b"), "<ul><li>a</li></ul>\n<ol start=\"1\"><li>b</li></ol>\n");
}

TEST(Prose, AListMayHoldBlocks) {
  EXPECT_EQ(prose("- one\n  - two\n\n- three\n\n  four"),
            "<ul><li><p>one</p><ul><li>two</li></ul></li><li><p>three</p><p>four</p></li></ul>\n");
}

TEST(Prose, WhatOnlyLooksLikeAListIsText) {
  for (const std::string text : {"-5 degrees", "1.5 times", "-- dash", "1234567890. A number"}) {
    EXPECT_EQ(prose(text).substr(0, 3), "<p>") << text;
  }
}

TEST(Prose, AQuotationAndARuleAreShownAsSuch) {
  EXPECT_EQ(prose("> one\n> two\n\n---"), "<blockquote><p>one\ntwo</p></blockquote>\n<hr>\n");
}

TEST(Prose, ABlockOfCodeIsKeptToTheLetter) {
  EXPECT_EQ(prose("```matlab\n# a < b\n\n  *c*\n```\nend"),
            "<pre><code># a &lt; b\n\n  *c*\n</code></pre>\n<p>end</p>\n");
  EXPECT_EQ(prose("```\nnever closed"), "<pre><code>never closed\n</code></pre>\n");
  EXPECT_EQ(prose("    indented"), "<pre><code>indented\n</code></pre>\n");
}

TEST(Prose, ABlockOfCodeEndsAtItsOwnFence) {
  EXPECT_EQ(prose("~~~ text\n```\n~~~\nend"), "<pre><code>```\n</code></pre>\n<p>end</p>\n");
  EXPECT_EQ(prose("````\n```\n````"), "<pre><code>```\n</code></pre>\n");
}

TEST(Prose, CodeInsideALineIsNotABlock) {
  EXPECT_EQ(prose("```a``` is code"), "<p><code>a</code> is code</p>\n");
}

TEST(Prose, ATableHasAHeadAndRows) {
  EXPECT_EQ(prose("| a | `b` |\n|---|:-:|\n| 1 | x \\| y |\n|2|\n\nend"),
            kTable +
                "<thead><tr><th scope=\"col\" class=\"start\">a</th><th scope=\"col\" "
                "class=\"center\"><code>b"
                "</code></th></tr></thead><tbody><tr><td class=\"start\">1</td><td "
                "class=\"center\">x | y</td></tr><tr>"
                "<td class=\"start\">2</td><td class=\"center\"></td></tr></tbody>" +
                kTableEnd + "<p>end</p>\n");
  EXPECT_EQ(prose("text\n\na|b\n-|-"), "<p>text</p>\n" + kTable +
                                           "<thead><tr><th scope=\"col\" class=\"start\">a</th><th "
                                           "scope=\"col\" class=\"start\">b</th></tr>"
                                           "</thead><tbody></tbody>" +
                                           kTableEnd);
}

TEST(Prose, WhatOnlyLooksLikeATableIsText) {
  for (const std::string text :
       {"a | b", "a | b\nc | d", "| a |\n| - | - |", "|\n|", "a | b\n-- | -x"}) {
    EXPECT_EQ(prose(text), "<p>" + text + "</p>\n") << text;
  }
}

TEST(Prose, ARowHasAsManyCellsAsTheHead) {
  EXPECT_EQ(prose("|a|\n|-|\n|b|2||c|"),
            kTable +
                "<thead><tr><th scope=\"col\" class=\"start\">a</th></tr></thead><tbody><tr><td "
                "class=\"start\">b</td>"
                "</tr></tbody>" +
                kTableEnd);
}

TEST(Prose, CodeStrongAndEmphasisedWordsAreSetOff) {
  EXPECT_EQ(prose("use `a < b` now"), "<p>use <code>a &lt; b</code> now</p>\n");
  EXPECT_EQ(prose("**Big** and *small*, `x`"),
            "<p><strong>Big</strong> and <em>small</em>, <code>x</code></p>\n");
  EXPECT_EQ(prose("(*a **b***)"), "<p>(<em>a <strong>b</strong></em>)</p>\n");
}

TEST(Prose, SignsWithoutEffectAreText) {
  for (const std::string text :
       {"5 * 3 * 2", "*.csv and *.wav", "** not strong **", "`open", "**", "x ****", "``",
        "snake_case_name", "a < b > c", "[a] b", "[a](b", "![a"}) {
    std::string shown = text;
    for (std::size_t at = 0; (at = shown.find_first_of("<>", at)) != std::string::npos; ++at) {
      shown.replace(at, 1, shown[at] == '<' ? "&lt;" : "&gt;");
    }
    EXPECT_EQ(prose(text), "<p>" + shown + "</p>\n") << text;
  }
}

TEST(Prose, HtmlIsLeftOut) {
  EXPECT_EQ(prose("a <b onclick=\"x\">c</b> <!-- d -->e"), "<p>a c e</p>\n");
  EXPECT_EQ(prose("one\n\n<script>\nalert(1)\n</script>\n\n<p>\n*a*\n\ntwo"),
            "<p>one</p>\n\n\n<p>two</p>\n");
  EXPECT_EQ(prose("&lt;script&gt; `&lt;`"), "<p>&lt;script&gt; <code>&amp;lt;</code></p>\n");
  EXPECT_EQ(prose(repeated("> ", 200) + "a <b>c</b>").find("&lt;b"), std::string::npos);
}

TEST(Prose, StruckOutTextIsMarked) {
  EXPECT_EQ(prose("~~old~~ *new*"), "<p><del>old</del> <em>new</em></p>\n");
  EXPECT_EQ(prose("about ~5 and ~6"), "<p>about ~5 and ~6</p>\n");
}

TEST(Prose, TasksAreDoneOrOpen) {
  const std::string box = "<li class=\"task\"><span class=\"box";
  EXPECT_EQ(prose("- [x] a\n- [ ] b\n- c"),
            "<ul>" + box + " done\" role=\"img\" aria-label=\"Done\"></span> a</li>" + box +
                "\" role=\"img\" aria-label=\"Open\"></span> b</li><li>c</li></ul>\n");
  EXPECT_EQ(prose("[x] a"), "<p>[x] a</p>\n");
}

TEST(Prose, OnlyPlainAddressesBecomeLinks) {
  const std::string end = "\" rel=\"noopener nofollow\">";
  EXPECT_EQ(prose("[*a*](https://x.org/b?c=d&e \"t\")"),
            "<p><a href=\"https://x.org/b?c=d&amp;e" + end + "<em>a</em></a></p>\n");
  EXPECT_EQ(prose("<ada@x.org> <http://x.org>"), "<p><a href=\"mailto:ada@x.org" + end +
                                                     "ada@x.org</a> <a href=\"http://x.org" + end +
                                                     "http://x.org</a></p>\n");
  EXPECT_EQ(prose("See http://x.org/a, www.x.org or ada@x.org."),
            "<p>See <a href=\"http://x.org/a" + end +
                "http://x.org/a</a>, <a href=\"http://www.x.org" + end +
                "www.x.org</a> or <a href=\"mailto:ada@x.org" + end + "ada@x.org</a>.</p>\n");
  EXPECT_EQ(prose("ftp://x.org `http://x.org`"), "<p>ftp://x.org <code>http://x.org</code></p>\n");
  EXPECT_EQ(prose("[a][b]\n\n[b]: mailto:ada@x.org"),
            "<p><a href=\"mailto:ada@x.org" + end + "a</a></p>\n");
  for (const std::string target :
       {"javascript:alert(1)", "JaVaScRiPt&colon;alert(1)", "java\\script:x", "data:text/html,x",
        "file:///etc/passwd", "//x.org", "docs/a.md", "#a", "", "ada@x.org", "https://u@x.org",
        "https://x.org/&quot;onclick=x", "mailto:https://x.org", "mailto:ada@x.org?bcc=b@x.org",
        "https:x.org", "&#104;ttps://x.org\\@y.org"}) {
    EXPECT_EQ(prose("[a](<" + target + ">)"), "<p>a</p>\n") << target;
  }
}

TEST(Prose, AnImageOfThePackageIsShown) {
  const std::string image = "<img src=\"data:image/png;base64,AAAA\" alt=\"a b &lt;c&gt;\">";
  EXPECT_EQ(prose("![a *b* `<c>`](<images/a b.png>)"), "<p>" + image + "</p>\n");
  EXPECT_EQ(prose("![a *b* `<c>`](./images/a%20b.png \"title\")"), "<p>" + image + "</p>\n");
  EXPECT_EQ(prose("[![a b &lt;c>](images/a%20b.png)](https://x.org)"),
            "<p><a href=\"https://x.org\" rel=\"noopener nofollow\">" + image + "</a></p>\n");
}

TEST(Prose, AnotherImageIsItsDescriptionAsALink) {
  EXPECT_EQ(prose("![a *b*](https://x.org/c.png)!"),
            "<p><a href=\"https://x.org/c.png\" rel=\"noopener nofollow\">a b</a>!</p>\n");
  EXPECT_EQ(
      prose("![](https://x.org/c.png)"),
      "<p><a href=\"https://x.org/c.png\" rel=\"noopener nofollow\">https://x.org/c.png</a></p>\n");
  EXPECT_EQ(prose("[![a](https://y.org/b.png)](https://x.org)"),
            "<p><a href=\"https://x.org\" rel=\"noopener nofollow\">a</a></p>\n");
  EXPECT_EQ(prose("![a](b.png) ![](b.png) ![c](large.png)"),
            "<p><span title=\"not in the package\">a</span>  <span title=\"left out: 9 "
            "MB\">c</span></p>\n");
  for (const std::string target :
       {"javascript:x", "data:image/png;base64,AAAA", "images/a%2", ""}) {
    const std::string page = prose("![a](<" + target + ">)");
    EXPECT_EQ(page.find("<a"), page.npos) << target;
    EXPECT_EQ(page.find("<img"), page.npos) << target;
    EXPECT_NE(page.find("a</"), page.npos) << target;
    EXPECT_EQ(page.find("title=\"\""), page.npos) << target;
  }
}

TEST(Prose, CellsOfATableAreAligned) {
  EXPECT_EQ(
      prose("|a|b|c|\n|:-|:-:|-:|\n|1|2|3|"),
      kTable +
          "<thead><tr><th scope=\"col\" class=\"start\">a</th><th scope=\"col\" "
          "class=\"center\">b</th>"
          "<th scope=\"col\" class=\"end\">c</th></tr></thead><tbody><tr><td class=\"start\">1</td>"
          "<td class=\"center\">2</td><td class=\"end\">3</td></tr></tbody>" +
          kTableEnd);
}

TEST(Prose, WhatIsNestedTooDeepIsTextWithoutMarkup) {
  const std::string page = prose(repeated("> ", 200) + "*deep*\n" + repeated("- ", 200) + "list");

  EXPECT_NE(page.find("deep\n"), std::string::npos);
  EXPECT_NE(page.find("list\n"), std::string::npos);
  EXPECT_EQ(page.find("<em>"), std::string::npos);
  EXPECT_LT(page.size(), 2000u);
}

// The texts are too long to be printed when they differ.
TEST(Prose, ATextThatIsTooLongIsPlain) {
  const std::string text = repeated("*a* `b`\n", 200000);

  EXPECT_TRUE(prose(text) == plain(text));
}

TEST(Prose, TextsThatTogetherAreTooLongBecomePlain) {
  const std::string word = repeated("a", 100000);

  const std::string page = pageOf([&](Prose& prose) {
    for (int i = 0; i < 3; ++i) prose.write("*" + word + "*", 3);
    prose.write("*b*", 3);
  });

  EXPECT_TRUE(page == "<p><em>" + word + "</em></p>\n" + plain("*" + word + "*") +
                          plain("*" + word + "*") + "<p><em>b</em></p>\n");
}

TEST(Prose, ManySmallTextsAreAllRead) {
  const std::string page = pageOf([](Prose& prose) {
    for (int i = 0; i < 2000; ++i) prose.write("*revision* " + repeated("x", 1000), 4);
  });

  EXPECT_TRUE(page.find("class=\"lines\"") == std::string::npos);
}

}  // namespace
