// SPDX-License-Identifier: MIT
#include "addon/gallery/detail/HtmlWriter.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "opc/Exception.h"

namespace {

using addon::gallery::detail::HtmlWriter;

template <typename Content>
std::string written(const Content& content) {
  std::string page;
  HtmlWriter html([&](std::string_view piece) { page += piece; });
  content(html);
  html.flush();
  return page;
}

std::string textAs(std::string_view text) {
  return written([&](HtmlWriter& html) { html.text(text); });
}

TEST(HtmlWriter, AnElementIsClosedByTheCallThatOpenedIt) {
  const std::string page = written([](HtmlWriter& html) {
    html.element("ul", {{"class", "files"}}, [&] {
      html.element("li", "one");
      html.element("li", [&] { html.empty("br", {}); });
    });
  });

  EXPECT_EQ(page, "<ul class=\"files\"><li>one</li><li><br></li></ul>");
}

TEST(HtmlWriter, MarkupInATextIsShownAsText) {
  EXPECT_EQ(textAs("<script>a && b</script>"), "&lt;script&gt;a &amp;&amp; b&lt;/script&gt;");
  EXPECT_EQ(textAs("--></style>&amp;"), "--&gt;&lt;/style&gt;&amp;amp;");
}

TEST(HtmlWriter, AQuoteInAnAttributeDoesNotEndIt) {
  const std::string page = written([](HtmlWriter& html) {
    html.empty("img", {{"alt", "\"><script>'&"}, {"src", ""}});
  });

  EXPECT_EQ(page, "<img alt=\"&quot;&gt;&lt;script&gt;&#39;&amp;\" src=\"\">");
}

TEST(HtmlWriter, TextInAnyLanguageIsUnchanged) {
  const std::string text = "größe שלום はじめに \xF0\x9F\x8E\xB5 \xE2\x80\xAE";

  EXPECT_EQ(textAs(text), text);
}

struct Unwritable {
  const char* what;
  std::string text;
  std::string shown;
};

class HtmlWriterUnwritable : public testing::TestWithParam<Unwritable> {};

TEST_P(HtmlWriterUnwritable, BecomesTheReplacementCharacter) {
  EXPECT_EQ(textAs(GetParam().text), GetParam().shown);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, HtmlWriterUnwritable,
    testing::Values(Unwritable{"Nul", std::string("a\0b", 3),
                               "a\xEF\xBF\xBD"
                               "b"},
                    Unwritable{"Escape", "\x1b[31m", "\xEF\xBF\xBD[31m"},
                    Unwritable{"Delete", "\x7f", "\xEF\xBF\xBD"},
                    Unwritable{"C1Control", "\xC2\x85", "\xEF\xBF\xBD"},
                    Unwritable{"Noncharacter", "\xEF\xBF\xBF", "\xEF\xBF\xBD"},
                    Unwritable{"NoncharacterOfAPlane", "\xF0\x9F\xBF\xBE", "\xEF\xBF\xBD"},
                    Unwritable{"NoncharacterInTheMiddle", "\xEF\xB7\x90", "\xEF\xBF\xBD"},
                    Unwritable{"HalfACharacter", "a\xE3\x81", "a\xEF\xBF\xBD"},
                    Unwritable{"Overlong", "\xC0\xBC", "\xEF\xBF\xBD\xEF\xBF\xBD"},
                    Unwritable{"TabsAndLineEnds", "a\tb\nc", "a\tb\nc"},
                    Unwritable{"CarriageReturns", "a\r\nb\rc\r", "a\nb\nc\n"}),
    [](const auto& each) { return each.param.what; });

TEST(HtmlWriter, ALongPageIsPassedOnInPieces) {
  std::vector<std::size_t> sizes;
  std::size_t total = 0;
  HtmlWriter html([&](std::string_view piece) {
    sizes.push_back(piece.size());
    total += piece.size();
  });

  for (int i = 0; i < 100000; ++i) html.element("p", "<");
  html.flush();

  EXPECT_EQ(total, 1100000u);
  EXPECT_GT(sizes.size(), 10u);
  for (const std::size_t size : sizes) EXPECT_LE(size, 70000u);
}

TEST(HtmlWriter, AStyleSheetThatWouldEndItsElementIsRefused) {
  HtmlWriter html([](std::string_view) {});

  EXPECT_NO_THROW(html.style("a > b { color: red }\n"));
  EXPECT_THROW(html.style("/* </style> */"), opc::Exception);
}

TEST(HtmlWriter, AScriptThatWouldEndItsElementIsRefused) {
  EXPECT_EQ(written([](HtmlWriter& html) { html.script("a && b;\n"); }),
            "<script>\na && b;\n</script>\n");
  HtmlWriter html([](std::string_view) {});

  EXPECT_THROW(html.script("'</script>'"), opc::Exception);
  EXPECT_THROW(html.script("'<!--<script>'"), opc::Exception);
}

TEST(HtmlWriter, APolicyNamesAScriptByTheHashOfAllThatIsInItsElement) {
  // printf '\n1;' | openssl sha256 -binary | base64
  EXPECT_EQ(addon::gallery::detail::policyHash("1;"),
            "'sha256-6eFJkgdjdhnZIbOQL70xJqjsv++LTNWgKmIRLzDgcew='");
}

}  // namespace
