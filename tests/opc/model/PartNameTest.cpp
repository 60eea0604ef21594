// SPDX-License-Identifier: MIT
#include "opc/model/PartName.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "opc/Text.h"
#include "tests/opc/model/PackageFixture.h"
#include "tests/opc/model/TextBeforeNothing.h"

using opc::model::PartName;
using test::faultOf;

namespace {

struct NameCase {
  const char16_t* name;
  const char* rule;  // "" for a name that is one
};

void PrintTo(const NameCase& c, std::ostream* out) {
  *out << opc::toUtf8ForDisplay(c.name) << " " << c.rule;
}

class PartNameRules : public testing::TestWithParam<NameCase> {};

const NameCase kNameCases[] = {
    // Made of segments, each after a slash.
    {u"/a", ""},
    {u"/a/b/c.d", ""},
    {u"", "PN-1"},
    {u"/", "PN-1"},
    {u"a", "PN-1"},
    {u"a/b", "PN-1"},
    {u"/a/", "PN-1"},
    {u"//a", "PN-1"},
    {u"/a//b", "PN-1"},
    // Characters.
    {u"/azAZ09-._~!$&'()*+,;=:@x", ""},
    {u"/a b", "PN-2"},
    {u"/a\"b", "PN-2"},
    {u"/a#b", "PN-2"},
    {u"/a<b", "PN-2"},
    {u"/a>b", "PN-2"},
    {u"/a?b", "PN-2"},
    {u"/[a", "PN-2"},
    {u"/a\\b", "PN-2"},
    {u"/a]", "PN-2"},
    {u"/a^b", "PN-2"},
    {u"/a`b", "PN-2"},
    {u"/a{b", "PN-2"},
    {u"/a|b", "PN-2"},
    {u"/a}b", "PN-2"},
    {u"/a\tb", "PN-2"},
    {u"/a\u007F", "PN-2"},
    {u"/\u00E9", ""},
    {u"/\u00A0", ""},
    {u"/\u009F", "PN-2"},
    {u"/\uD7FF", ""},
    {u"/\uE000", "PN-2"},
    {u"/\uF8FF", "PN-2"},
    {u"/\uF900", ""},
    {u"/\uFDCF", ""},
    {u"/\uFDD0", "PN-2"},
    {u"/\uFDEF", "PN-2"},
    {u"/\uFDF0", ""},
    {u"/\uFFEF", ""},
    {u"/\uFFF0", "PN-2"},
    {u"/\U00010000", ""},
    {u"/\U0001F600.png", ""},
    {u"/\U0001FFFD", ""},
    {u"/\U0001FFFE", "PN-2"},
    {u"/\U000E0FFF", "PN-2"},
    {u"/\U000E1000", ""},
    {u"/\U000EFFFD", ""},
    {u"/\U000F0000", "PN-2"},
    {u"/\xD800", "PN-2"},
    {u"/\xDC00x", "PN-2"},
    // Percent signs.
    {u"/a%20b", ""},
    {u"/a%5Bb%25", ""},
    {u"/%c3%A9", ""},
    {u"/%FF", ""},
    {u"/a%", "PN-3"},
    {u"/a%2", "PN-3"},
    {u"/a%2/b", "PN-3"},
    {u"/a%G0", "PN-3"},
    {u"/a%0G", "PN-3"},
    {u"/a%2Fb", "PN-4"},
    {u"/a%2fb", "PN-4"},
    {u"/a%5Cb", "PN-4"},
    {u"/a%5cb", "PN-4"},
    {u"/a%00", "PN-4"},
    {u"/%41", "PN-5"},
    {u"/%7A", "PN-5"},
    {u"/%39", "PN-5"},
    {u"/%2D", "PN-5"},
    {u"/%2e", "PN-5"},
    {u"/%5F", "PN-5"},
    {u"/%7e", "PN-5"},
    // Dots at the end.
    {u"/.a", ""},
    {u"/a.b/..c", ""},
    {u"/a.", "PN-6"},
    {u"/a./b", "PN-6"},
    {u"/.", "PN-6"},
    {u"/..", "PN-6"},
    {u"/a/../b", "PN-6"},
    {u"/./a", "PN-6"},
};

TEST_P(PartNameRules, Hold) {
  const NameCase& c = GetParam();

  const test::Fault fault = faultOf([&] { PartName name{c.name}; });

  EXPECT_EQ(fault.rule, *c.rule == '\0' ? "none" : c.rule) << fault.text;
  if (*c.rule != '\0') {
    EXPECT_EQ(fault.code, opc::ErrorCode::InvalidName);
  }
}

INSTANTIATE_TEST_SUITE_P(Names, PartNameRules, testing::ValuesIn(kNameCases));

}  // namespace

TEST(PartName, TheErrorNamesThePartAndTheReason) {
  const test::Fault fault = faultOf([] { PartName name(u"/a./b"); });

  EXPECT_EQ(fault.text, "invalid part name '/a./b': a segment ends in a dot");
}

TEST(PartName, KeepsWhatWasGivenAndEncodesOnlyWhatIsNotAscii) {
  const PartName name(u"/B\u00FCcher/A%20b.M");

  EXPECT_EQ(name.toString(), u"/B\u00FCcher/A%20b.M");
  EXPECT_EQ(name.canonical(), "/B%C3%BCcher/A%20b.M");
  EXPECT_EQ(name.key(), "/b%c3%bccher/a%20b.m");
  EXPECT_EQ(name.itemName(), "B%C3%BCcher/A%20b.M");
}

TEST(PartName, CanonicalFormEncodesEveryByteOutsideAsciiAndNoOther) {
  constexpr const char* kDigits = "0123456789ABCDEF";
  for (unsigned byte = 0; byte < 256; ++byte) {
    const std::string name(1, static_cast<char>(byte));
    const std::string encoded = {'%', kDigits[byte / 16], kDigits[byte % 16]};

    EXPECT_EQ(opc::model::canonicalItemName(name), byte < 0x80 ? name : encoded);
  }
}

TEST(PartName, NothingBeyondANameIsRead) {
  const auto ruleOf = [](std::string_view name) {
    const test::TextBeforeNothing text(name);
    const opc::model::NameFault* fault = opc::model::findNameFault(text.view());
    return std::string_view(fault == nullptr ? "" : fault->rule);
  };

  for (const char* name : {"a", "ab/c.de", "a%20", "\xC3\xA9", "\xF0\x9F\x98\x80"}) {
    EXPECT_EQ(ruleOf(name), "") << name;
  }
  EXPECT_EQ(ruleOf("a/"), "PN-1");
  EXPECT_EQ(ruleOf("a\xC3"), "PN-2");
  EXPECT_EQ(ruleOf("a\xF0\x9F\x98"), "PN-2");
  EXPECT_EQ(ruleOf("a%"), "PN-3");
  EXPECT_EQ(ruleOf("a%2"), "PN-3");
  EXPECT_EQ(ruleOf("a."), "PN-6");
}

TEST(PartName, EqualWithoutAsciiCaseAndInBothSpellingsOfOtherCharacters) {
  EXPECT_EQ(PartName(u"/A/b.XML"), PartName(u"/a/B.xml"));
  EXPECT_EQ(PartName(u"/\u00E9"), PartName(u"/%c3%A9"));
  EXPECT_FALSE(PartName(u"/%C3%89") == PartName(u"/%C3%A9"));  // É and é
  EXPECT_FALSE(PartName(u"/\u00E9") == PartName(u"/e\u0301"));
  EXPECT_FALSE(PartName(u"/a") == PartName(u"/a%20"));
}

TEST(PartName, OfAnItemBeginsWithASlash) {
  const PartName name = PartName::fromItemName("a/\xC3\xA9.m");

  EXPECT_EQ(name.canonical(), "/a/%C3%A9.m");
  EXPECT_EQ(name.toString(), u"/a/\u00E9.m");
}

TEST(PartName, OfAnItemIsCheckedToo) {
  EXPECT_EQ(faultOf([] { PartName::fromItemName("/a"); }).rule, "PN-1");
  EXPECT_EQ(faultOf([] { PartName::fromItemName("a\xC3"); }).rule, "PN-2");
  EXPECT_EQ(faultOf([] { PartName::fromItemName("a\xED\xA0\x80"); }).rule, "PN-2");
  EXPECT_EQ(faultOf([] { PartName::fromItemName(std::string_view("a\0b", 3)); }).rule, "PN-2");
  EXPECT_EQ(faultOf([] { PartName::fromItemName("a/"); }).rule, "PN-1");
}

TEST(PartName, ExtensionFollowsTheLastDotOfTheLastSegment) {
  EXPECT_EQ(PartName(u"/_rels/.rels").getExtension(), "rels");
  EXPECT_EQ(PartName(u"/.gitignore").getExtension(), "gitignore");
  EXPECT_EQ(PartName(u"/a.b/c").getExtension(), "");
  EXPECT_EQ(PartName(u"/a/b.tar.GZ").getExtension(), "GZ");
}

TEST(PartName, OfRelationshipsIsKnownWithoutCase) {
  EXPECT_TRUE(PartName(u"/_rels/.rels").isRelationshipsPartName());
  EXPECT_TRUE(PartName(u"/_RELS/.Rels").isRelationshipsPartName());
  EXPECT_TRUE(PartName(u"/a/_rels/b.m.rels").isRelationshipsPartName());
  EXPECT_FALSE(PartName(u"/a/b.rels").isRelationshipsPartName());
  EXPECT_FALSE(PartName(u"/_rels/a.xml").isRelationshipsPartName());
  EXPECT_FALSE(PartName(u"/_rels/a/b.rels").isRelationshipsPartName());
  EXPECT_FALSE(PartName(u"/x_rels/b.rels").isRelationshipsPartName());
  EXPECT_FALSE(PartName(u"/_rels").isRelationshipsPartName());
}

TEST(PartName, KnowsWhereItsRelationshipsLie) {
  EXPECT_EQ(PartName(u"/x/y.z").relationshipsPartName().canonical(), "/x/_rels/y.z.rels");
  EXPECT_EQ(PartName(u"/y").relationshipsPartName().canonical(), "/_rels/y.rels");
  EXPECT_EQ(opc::model::relationshipsItemName(""), "_rels/.rels");
}

TEST(PartName, SourceOfRelationshipsIsFoundFromTheirName) {
  EXPECT_EQ(opc::model::sourceOfRelationships("x/_rels/y.z.rels"), "x/y.z");
  EXPECT_EQ(opc::model::sourceOfRelationships("_RELS/y.Rels"), "y");
  EXPECT_EQ(opc::model::sourceOfRelationships("_rels/.rels"), "");
}

TEST(PercentEncoding, MakesSegmentsOfAPath) {
  EXPECT_EQ(opc::model::percentEncodePath("a b/c%.m"), "a%20b/c%25.m");
  EXPECT_EQ(opc::model::percentEncodePath("\xC3\xA9[1]#?"), "%C3%A9%5B1%5D%23%3F");
  EXPECT_EQ(opc::model::percentEncodePath("az-._~!$&'()*+,;=:@"), "az-._~!$&'()*+,;=:@");
}

TEST(PercentEncoding, DecodesExactlyOnce) {
  EXPECT_EQ(opc::model::percentDecodePath("a%2520b"), "a%20b");
  EXPECT_EQ(opc::model::percentDecodePath("%c3%A9/x"), "\xC3\xA9/x");
}

TEST(PercentEncoding, EveryByteOfAPathComesBack) {
  std::string path;
  for (char32_t c = 1; c < 0x800; ++c) {
    if (c < 0x80) {
      path += static_cast<char>(c);
    } else {
      path += static_cast<char>(0xC0 | (c >> 6));
      path += static_cast<char>(0x80 | (c & 0x3F));
    }
  }

  const std::string encoded = opc::model::percentEncodePath(path);

  EXPECT_EQ(opc::model::percentDecodePath(encoded), path);
  EXPECT_EQ(encoded.find_first_of(" \"#<>?[\\]^`{|}\t\n"), std::string::npos);
}

TEST(PercentEncoding, WhatDecodesToNoTextIsRefused) {
  EXPECT_EQ(faultOf([] { opc::model::percentDecodePath("a%FF"); }).rule, "PN-12");
  EXPECT_EQ(faultOf([] { opc::model::percentDecodePath("a%4"); }).rule, "PN-3");
  EXPECT_EQ(faultOf([] { opc::model::percentDecodePath("a%xy"); }).rule, "PN-3");
}

TEST(PlainSegments, AreThoseThatAreFitForANameWithoutEscapesAndInAscii) {
  for (const std::string around : {"", "a", "ab.c", "segment", "segments-of_eight"}) {
    for (int byte = 1; byte < 256; ++byte) {
      for (const std::string& segment :
           {around + static_cast<char>(byte), static_cast<char>(byte) + around}) {
        const bool isFit = byte < 0x80 && segment.find_first_of("/%") == std::string::npos &&
                           opc::model::findNameFault(segment) == nullptr;
        EXPECT_EQ(opc::model::isPlainSegment(segment), isFit) << segment;
      }
    }
  }
  EXPECT_FALSE(opc::model::isPlainSegment(""));
}
