// SPDX-License-Identifier: MIT
#include "addon/gallery/detail/PlainAddress.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using addon::gallery::detail::filePathOf;
using addon::gallery::detail::isPlainDate;
using addon::gallery::detail::linkOf;

struct Case {
  std::string text;
  std::string link;
};

class LinkOf : public testing::TestWithParam<Case> {};

TEST_P(LinkOf, IsSetForAPlainAddressOnly) {
  EXPECT_EQ(linkOf(GetParam().text), GetParam().link);
}

INSTANTIATE_TEST_SUITE_P(
    Addresses, LinkOf,
    testing::Values(
        Case{"ada@example.org", "mailto:ada@example.org"},
        Case{"a.b+c_d-e@mail.example.org", "mailto:a.b+c_d-e@mail.example.org"},
        Case{"https://example.org", "https://example.org"},
        Case{"http://example.org:8080/a/b?c=d&e=%20#f", "http://example.org:8080/a/b?c=d&e=%20#f"},
        Case{"", ""}, Case{"Ada Lind", ""}, Case{"ada@localhost", ""}, Case{"@example.org", ""},
        Case{"ada@", ""}, Case{"a@b@example.org", ""}, Case{"ada@example..org", ""},
        Case{"ada@.example.org", ""}, Case{"ada@example.org?bcc=eve@example.org", ""},
        Case{"ada@example.org\n", ""}, Case{"Ada <ada@example.org>", ""},
        Case{std::string(300, 'a') + "@example.org", ""}, Case{"javascript:alert(1)", ""},
        Case{"data:text/html,x", ""}, Case{"HTTPS://example.org", ""}, Case{"//example.org", ""},
        Case{"http://", ""}, Case{"https:///path", ""},
        Case{"https://bank.example@evil.example/", ""}, Case{"https://example.org/a b", ""},
        Case{"https://example.org/\"onclick=", ""}, Case{"https://example.org:x/", ""},
        Case{"https://ex\xC3\xA4mple.org/", ""}, Case{"https://example.org\\@evil.example", ""},
        Case{" https://example.org", ""}));

TEST(IsPlainDate, KnowsTheDaysOfTheCalendar) {
  EXPECT_TRUE(isPlainDate("2026-02-01"));
  EXPECT_TRUE(isPlainDate("2024-02-29"));
  for (const char* text :
       {"2025-02-29", "2026-13-01", "2026-00-10", "2026-1-01", "2026-02-1 ", "0000-01-01",
        "+026-02-01", "-026-02-01", "2026/02/01", "yesterday", ""}) {
    EXPECT_FALSE(isPlainDate(text)) << text;
  }
}

TEST(FilePathOf, IsThatOfARelativeAddress) {
  EXPECT_EQ(filePathOf("a.png"), "a.png");
  EXPECT_EQ(filePathOf("././i/a%20%C3%A4.png?raw=true#x"), "i/a \xC3\xA4.png");
  for (const char* address : {"", "#a", "a%FFb", "50%.png", "a%2g"})
    EXPECT_EQ(filePathOf(address), "");
}

}  // namespace
