// SPDX-License-Identifier: MIT
#include "opc/model/detail/TargetResolution.h"

#include <gtest/gtest.h>

#include <ostream>

#include "opc/Text.h"
#include "tests/opc/model/PackageFixture.h"

using opc::model::detail::ResolvedTarget;
using opc::model::detail::resolveTarget;
using test::faultOf;

namespace {

struct TargetCase {
  const char* source;
  const char16_t* target;
  const char* part;  // where it leads
  bool corrected = false;
};

void PrintTo(const TargetCase& c, std::ostream* out) {
  *out << "/" << c.source << " -> " << opc::toUtf8ForDisplay(c.target);
}

class GoodTargets : public testing::TestWithParam<TargetCase> {};

const TargetCase kGoodTargets[] = {
    {"a/c.m", u"b.m", "/a/b.m"},
    {"a/c.m", u"./b.m", "/a/b.m"},
    {"a/c.m", u"/b.m", "/b.m"},
    {"a/c.m", u"../b.m", "/b.m"},
    {"a/c.m", u"x/../b.m", "/a/b.m"},
    {"a/c.m", u"x/./y/../b.m", "/a/x/b.m"},
    {"a/b/c.m", u"../../x", "/x"},
    {"a/b/c.m", u"../../../../x", "/x"},
    {"c.m", u"b.m", "/b.m"},
    {"", u"a/b.m", "/a/b.m"},
    {"", u"../../a", "/a"},
    {"", u"/..//../a", "/a"},
    {"", u" /a.m\t\r\n", "/a.m"},
    {"a/c.m", u"#x", "/a/c.m"},
    {"a/c.m", u"", "/a/c.m"},
    {"a/c.m", u"b.m#sheet?1", "/a/b.m"},
    {"", u"/\u00E9.m", "/%C3%A9.m"},
    {"", u"/%C3%a9.m", "/%C3%a9.m"},
    {"", u"/a%20b", "/a%20b"},
    {"", u"./a:b", "/a:b"},
    {"", u"a/b:c", "/a/b:c"},
    {"a/c.m", u"b.m?query", "/a/b.m", true},
    {"a/c.m", u"?query", "/a/c.m", true},
    {"", u"\\a\\b.m", "/a/b.m", true},
    {"a/c.m", u"..\\b.m", "/b.m", true},
    {"", u"/a b.m", "/a%20b.m", true},
    {"", u"/%41%2Em", "/A.m", true},
    {"a/c.m", u"%2E%2e/b", "/b", true},
};

TEST_P(GoodTargets, Resolve) {
  const TargetCase& c = GetParam();

  const ResolvedTarget resolved = resolveTarget(c.source, c.target);

  EXPECT_EQ(resolved.name.canonical(), c.part);
  EXPECT_EQ(resolved.corrected, c.corrected);
}

INSTANTIATE_TEST_SUITE_P(Targets, GoodTargets, testing::ValuesIn(kGoodTargets));

struct BadTarget {
  const char* source;
  const char16_t* target;
  const char* rule;
};

void PrintTo(const BadTarget& c, std::ostream* out) {
  *out << "/" << c.source << " -> " << opc::toUtf8ForDisplay(c.target);
}

class BadTargets : public testing::TestWithParam<BadTarget> {};

const BadTarget kBadTargets[] = {
    {"", u"", "RL-7"},         {"", u"  ", "RL-7"},
    {"", u"#x", "RL-7"},       {"", u"http://h/a", "RL-7"},
    {"", u"pack:a", "RL-7"},   {"", u"c:a.m", "RL-7"},
    {"", u"C:\\a.m", "RL-7"},  {"", u"1:a", "RL-7"},
    {"", u"//host/a", "RL-7"}, {"", u"\\\\host\\a", "RL-7"},
    {"", u"/", "RL-8"},        {"", u"..", "RL-8"},
    {"a/b", u".", "RL-8"},     {"", u"/a/", "RL-8"},
    {"", u"/a//b", "RL-8"},    {"", u"/a.", "RL-8"},
    {"", u"/a<b", "RL-8"},     {"", u"/a%2Fb", "RL-8"},
    {"", u"/a%", "RL-8"},      {"", u"/a\nb", "RL-8"},
    {"", u"/\xD800", "RL-8"},
};

TEST_P(BadTargets, AreRefused) {
  const BadTarget& c = GetParam();

  const test::Fault fault = faultOf([&] { resolveTarget(c.source, c.target); });

  EXPECT_EQ(fault.rule, c.rule) << fault.text;
}

INSTANTIATE_TEST_SUITE_P(Targets, BadTargets, testing::ValuesIn(kBadTargets));

}  // namespace

TEST(TargetResolution, KeepsTheFragmentApart) {
  const ResolvedTarget resolved = resolveTarget("", u"/a.m#line 3");

  EXPECT_EQ(resolved.name.canonical(), "/a.m");
  EXPECT_EQ(resolved.fragment, u"#line 3");
}

TEST(TargetResolution, TheErrorShowsWhereTheTargetLeads) {
  const test::Fault fault = faultOf([] { resolveTarget("a/b", u"../c."); });

  EXPECT_EQ(fault.text,
            "internal target '../c.': '/c.' is not a part name, a segment ends in a dot");
}
