// SPDX-License-Identifier: MIT
#include "text/Markdown.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <string>
#include <vector>

namespace {

using text::Markdown;

constexpr std::size_t kSize = 64 << 10;

std::string repeated(std::string_view text, std::size_t size) {
  std::string result;
  while (result.size() + text.size() <= size) result += text;
  return result;
}

double processorSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

TEST(Markdown, IsATreeOfNodes) {
  const Markdown markdown("# a\n\n|b|\n|-|\n|c|");

  ASSERT_NE(markdown.root(), nullptr);
  cmark_node* const heading = cmark_node_first_child(markdown.root());
  EXPECT_EQ(cmark_node_get_type(heading), CMARK_NODE_HEADING);
  EXPECT_EQ(text::literalOf(cmark_node_first_child(heading)), "a");
  cmark_node* const table = cmark_node_next(heading);
  EXPECT_TRUE(text::isOfType(table, "table"));
  EXPECT_TRUE(text::isOfType(cmark_node_first_child(table), "table_header"));
  EXPECT_EQ(cmark_node_next(table), nullptr);
}

TEST(Markdown, MayBeReadWhileAnotherIs) {
  const Markdown outer("a");
  {
    const Markdown inner(repeated("*b* ", 100000));
    EXPECT_EQ(text::literalOf(cmark_node_first_child(
                  cmark_node_first_child(cmark_node_first_child(inner.root())))),
              "b");
  }
  const Markdown refused(repeated("- ", kSize));
  EXPECT_EQ(refused.root(), nullptr);

  EXPECT_EQ(text::literalOf(cmark_node_first_child(cmark_node_first_child(outer.root()))), "a");
}

TEST(Markdown, ThatNestsTooDeepIsNotRead) {
  EXPECT_NE(Markdown(repeated("- ", 900) + "a").root(), nullptr);
  EXPECT_EQ(Markdown(repeated("- ", 1100) + "a").root(), nullptr);
  for (const std::string_view lines : {"\n", "\r", "x\n", "\r\n"}) {
    EXPECT_EQ(Markdown(repeated("1. ", 900) + "a\n" + repeated(lines, kSize)).root(), nullptr);
  }
}

TEST(Markdown, ThatNeedsMuchMemoryIsNotRead) {
  const std::string wide = repeated("|a", 4000) + "\n" + repeated("|-", 4000) + "\n";
  EXPECT_EQ(Markdown(wide + repeated("a\n", kSize)).root(), nullptr);
  EXPECT_EQ(Markdown("[a]: " + repeated("x", kSize / 2) + "\n" + repeated("[a]", kSize / 2)).root(),
            nullptr);
}

TEST(Markdown, WithManyBracketsAfterALinkIsNotRead) {
  EXPECT_NE(Markdown("http://a.b" + repeated(")", 900)).root(), nullptr);
  EXPECT_EQ(Markdown("http://a.b" + repeated(")", 1100)).root(), nullptr);
}

TEST(Markdown, OfHostileTextIsReadInBoundedTime) {
  const std::string half = repeated("- > ", 900) + "a\n";
  const std::vector<std::string> texts{repeated("[", kSize),
                                       repeated("]", kSize),
                                       repeated("![", kSize),
                                       repeated("![[]()", kSize),
                                       repeated("[a](", kSize),
                                       repeated("[a](<b", kSize),
                                       repeated("[", kSize / 2) + repeated("](b)", kSize / 2),
                                       repeated("<", kSize),
                                       repeated("<!--", kSize),
                                       repeated("*a_ ", kSize),
                                       repeated("a**b", kSize),
                                       repeated("_a*b", kSize),
                                       repeated("*_", kSize),
                                       repeated("`a``", kSize),
                                       repeated("&", kSize),
                                       repeated(">", kSize),
                                       repeated("> ", 900) + repeated("a\n", 2000),
                                       repeated(half, kSize),
                                       half + repeated("\n", 1000),
                                       repeated("|", kSize),
                                       repeated("|a", kSize / 4) + "\n" +
                                           repeated("|-", kSize / 4) + "\n" +
                                           repeated("|\n", kSize / 2),
                                       repeated("|x|\n|-|\n", kSize),
                                       repeated("[a]: b\n", kSize),
                                       repeated("a\n==\n", kSize),
                                       repeated("@", kSize),
                                       repeated("a@", kSize),
                                       repeated("a@b.c ", kSize),
                                       repeated("www.", kSize),
                                       "www." + repeated("(", kSize),
                                       repeated("http://a.b" + repeated(")", 990), kSize),
                                       "http://a.b" + repeated("&a;", kSize),
                                       repeated("http://", kSize),
                                       repeated("http://a.b ", kSize),
                                       repeated("h://_", kSize),
                                       repeated(":", kSize),
                                       repeated("~a", kSize),
                                       repeated("~~a *b ", kSize),
                                       repeated("- [x] a\n", kSize),
                                       repeated("- [", kSize)};
  for (const std::string& text : texts) {
    const double start = processorSeconds();

    const Markdown markdown(text);

    EXPECT_LT(processorSeconds() - start, 20) << text.substr(0, 40);
  }
}

}  // namespace
