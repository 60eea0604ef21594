// SPDX-License-Identifier: MIT
#include "opc/model/RelationshipSet.h"

#include <gtest/gtest.h>

#include <ostream>

#include "opc/model/XercesHelper.h"
#include "tests/opc/model/PackageFixture.h"

using opc::model::Relationship;
using opc::model::RelationshipSet;
using opc::model::TargetMode;
using opc::model::URI;
using test::faultOf;

namespace {

RelationshipSet parse(std::string_view xml, std::string source = {}) {
  opc::MemoryInputStream stream(reinterpret_cast<const unsigned char*>(xml.data()), xml.size());
  return RelationshipSet::read(std::move(source), stream);
}

constexpr std::string_view kCore =
    "http://schemas.openxmlformats.org/package/2006/relationships/metadata/core-properties";

// `@` stands for the namespace declaration, `^` for a good relationship, `$` for Type and Target.
struct PartCase {
  const char* xml;
  const char* rule;
};

void PrintTo(const PartCase& c, std::ostream* out) {
  *out << c.xml;
}

std::string expand(std::string_view text) {
  std::string result;
  for (const char c : text) {
    if (c == '@') {
      result += "xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\"";
    } else if (c == '^') {
      result += "<Relationship Id=\"good\" Type=\"urn:t\" Target=\"/a\"/>";
    } else if (c == '$') {
      result += "Type=\"urn:t\" Target=\"/a\"";
    } else {
      result += c;
    }
  }
  return result;
}

class RelationshipsPart : public testing::TestWithParam<PartCase> {};

const PartCase kParts[] = {
    // Structure.
    {"<Relationships @>^</Relationships>", ""},
    {"<Relationships @/>", ""},
    {"<r:Relationships xmlns:r='http://schemas.openxmlformats.org/package/2006/relationships'>"
     "<r:Relationship Id='a' $/></r:Relationships>",
     ""},
    {"<Relationships @> <!-- c -->^ <?p i?></Relationships>", ""},
    {"<Relationships @><Relationship Id='a' $>text</Relationship></Relationships>", ""},
    {"<Relationships>^</Relationships>", "RL-3"},
    {"<relationships @>^</relationships>", "RL-3"},
    {"<Relationship @ Id='a' $/>", "RL-3"},
    {"<Relationships @ a='b'>^</Relationships>", "RL-3"},
    {"<Relationships @>text^</Relationships>", "RL-3"},
    {"<Relationships @><Other/></Relationships>", "RL-3"},
    {"<Relationships @><Relationship Id='a' $ More=''/></Relationships>", "RL-3"},
    {"<Relationships @><Relationship Id='a' $>^</Relationship></Relationships>", "RL-3"},
    {"<Relationships @ xmlns:r='http://schemas.openxmlformats.org/package/2006/relationships'>"
     "<Relationship r:Id='a' $/></Relationships>",
     "RL-3"},
    {"<Relationships @><Relationship Id='a' Type='urn:t' TargetMode='External'/></Relationships>",
     "RL-3"},
    // Ids.
    {"<Relationships @><Relationship Id=' a ' $/></Relationships>", ""},
    {"<Relationships @><Relationship Id='_a-b.c1' $/></Relationships>", ""},
    {"<Relationships @><Relationship Id='&#xE9;' $/></Relationships>", ""},
    {"<Relationships @><Relationship Id='A' $/><Relationship Id='a' $/></Relationships>", ""},
    {"<Relationships @><Relationship $/></Relationships>", "RL-4"},
    {"<Relationships @><Relationship Id='' $/></Relationships>", "RL-4"},
    {"<Relationships @><Relationship Id='1a' $/></Relationships>", "RL-4"},
    {"<Relationships @><Relationship Id='-a' $/></Relationships>", "RL-4"},
    {"<Relationships @><Relationship Id='a:b' $/></Relationships>", "RL-4"},
    {"<Relationships @><Relationship Id='a b' $/></Relationships>", "RL-4"},
    {"<Relationships @>^^</Relationships>", "RL-4"},
    {"<Relationships @>^<Relationship Id=' good' $/></Relationships>", "RL-4"},
    // Types.
    {"<Relationships @><Relationship Id='a' Target='/a'/></Relationships>", "RL-5"},
    {"<Relationships @><Relationship Id='a' Type='' Target='/a'/></Relationships>", "RL-5"},
    // Modes.
    {"<Relationships @><Relationship Id='a' $ TargetMode='Internal'/></Relationships>", ""},
    {"<Relationships @><Relationship Id='a' $ TargetMode='External'/></Relationships>", ""},
    {"<Relationships @><Relationship Id='a' $ TargetMode='external'/></Relationships>", "RL-6"},
    {"<Relationships @><Relationship Id='a' $ TargetMode=''/></Relationships>", "RL-6"},
    // Internal targets.
    {"<Relationships @><Relationship Id='a' Type='urn:t'/></Relationships>", "RL-7"},
    {"<Relationships @><Relationship Id='a' Type='urn:t' Target=''/></Relationships>", "RL-7"},
    {"<Relationships @><Relationship Id='a' Type='urn:t' Target='http://x/y'/></Relationships>",
     "RL-7"},
    {"<Relationships @><Relationship Id='a' Type='urn:t' Target='//x/y'/></Relationships>", "RL-7"},
    {"<Relationships @><Relationship Id='a' Type='urn:t' Target='/a.'/></Relationships>", "RL-8"},
    {"<Relationships @><Relationship Id='a' Type='urn:t' Target='/_rels/.rels'/></Relationships>",
     "RL-9"},
    {"<Relationships @><Relationship Id='a' Type='urn:t' Target='x/_RELS/y.Rels#z'/>"
     "</Relationships>",
     "RL-9"},
    // External ones are not judged.
    {"<Relationships @><Relationship Id='a' Type='urn:t' Target='' TargetMode='External'/>"
     "</Relationships>",
     ""},
    {"<Relationships @><Relationship Id='a' Type='urn:t' Target='\\\\h\\ &lt;{' "
     "TargetMode='External'/></Relationships>",
     ""},
    {"<Relationships @><Relationship Id='a' Type='urn:t' Target='_rels/.rels' "
     "TargetMode='External'/></Relationships>",
     ""},
    // Attributes of XML itself.
    {"<Relationships @ xml:base='/x'>^</Relationships>", "RL-14"},
    {"<Relationships @><Relationship Id='a' $ xml:base='/x'/></Relationships>", "RL-14"},
    {"<Relationships @ xml:lang='en'>^</Relationships>", "XM-4"},
};

TEST_P(RelationshipsPart, IsReadStrictly) {
  const PartCase& c = GetParam();

  const test::Fault fault = faultOf([&] { parse(expand(c.xml)); });

  EXPECT_EQ(fault.rule, *c.rule == '\0' ? "none" : c.rule) << fault.text;
}

INSTANTIATE_TEST_SUITE_P(Parts, RelationshipsPart, testing::ValuesIn(kParts));

std::string coreXml(std::string_view id, std::string_view more = {}) {
  return "<Relationship Id=\"" + std::string(id) + "\" Type=\"" + std::string(kCore) +
         std::string(more) + "\" Target=\"/core.xml\"/>";
}

}  // namespace

TEST(RelationshipSet, TheErrorNamesSourceAndRelationship) {
  const test::Fault fault =
      faultOf([] { parse(test::relationshipsXml(test::relationshipXml("r1", "/a.")), "x/y"); });

  EXPECT_EQ(
      fault.text,
      "relationship 'r1' of '/x/y': internal target '/a.': '/a.' is not a part name, a segment "
      "ends in a dot");
}

TEST(RelationshipSet, TargetsAreResolvedAgainstTheSource) {
  const RelationshipSet set = parse(test::relationshipsXml(test::relationshipXml("r1", "b.m") +
                                                           test::relationshipXml("r2", "#x")),
                                    "a/c.m");

  EXPECT_EQ(set.find(u"r1")->getTargetURI(), URI(u"/a/b.m"));
  EXPECT_EQ(set.find(u"r2")->getTargetURI(), URI(u"/a/c.m"));
}

TEST(RelationshipSet, ExternalTargetStaysAsItIsStored) {
  const RelationshipSet set = parse(test::relationshipsXml(
      test::relationshipXml("r1", " ..\\x y#z ", "TargetMode=\"External\"")));

  EXPECT_EQ(set.find(u"r1")->getTargetURI(), URI(u" ..\\x y#z "));
  EXPECT_EQ(set.find(u"r1")->getTargetMode(), TargetMode::External);
}

TEST(RelationshipSet, KeepsTheStoredOrder) {
  const RelationshipSet set = parse(test::relationshipsXml(test::relationshipXml("z", "/1") +
                                                           test::relationshipXml("a", "/2") +
                                                           test::relationshipXml("m", "/3")));

  std::u16string ids;
  for (const auto& entry : set.entries()) ids += entry.relationship.getId();

  EXPECT_EQ(ids, u"zam");
}

TEST(RelationshipSet, ThoseOfATypeFollowEveryChange) {
  RelationshipSet set(std::string{});
  const auto idsOf = [&](std::u16string_view type) {
    std::u16string ids;
    for (const Relationship& one : set.ofType(type)) ids += one.getId();
    return ids;
  };
  EXPECT_EQ(idsOf(u"urn:t"), u"");

  set.addInternal(u"urn:t", URI(u"/1"), u"c");
  set.addInternal(u"urn:u", URI(u"/2"), u"b");
  set.addInternal(u"urn:t", URI(u"/3"), u"a");
  EXPECT_EQ(idsOf(u"urn:t"), u"ca");
  EXPECT_EQ(idsOf(u"urn:u"), u"b");
  EXPECT_EQ(idsOf(u"urn:T"), u"");

  set.remove(u"c");
  set.addInternal(u"urn:t", URI(u"/4"), u"d");
  EXPECT_EQ(idsOf(u"urn:t"), u"ad");
}

TEST(RelationshipSet, OnlyThePackageMayNotHaveTwoToCoreProperties) {
  const std::string twice = test::relationshipsXml(coreXml("a") + coreXml("b"));

  EXPECT_EQ(faultOf([&] { parse(twice); }).rule, "CP-1");
  EXPECT_EQ(faultOf([&] { parse(twice, "x"); }).rule, "none");
}

TEST(RelationshipSet, TypesAreComparedLetterForLetter) {
  const std::string other = test::relationshipsXml(coreXml("a") + coreXml("b", "/"));

  EXPECT_EQ(faultOf([&] { parse(other); }).rule, "none");
}

TEST(RelationshipSet, ASecondOneToCorePropertiesIsNotMade) {
  RelationshipSet set = parse(test::relationshipsXml(coreXml("a")));
  const std::u16string core(kCore.begin(), kCore.end());

  EXPECT_EQ(faultOf([&] { set.addInternal(core, URI(u"/x"), u""); }).rule, "CP-1");

  set.remove(u"a");
  EXPECT_EQ(faultOf([&] { set.addInternal(core, URI(u"/x"), u""); }).rule, "none");
}

TEST(RelationshipSet, CorePropertiesOutsideThePackageAreNotMade) {
  RelationshipSet set{std::string()};
  const std::u16string core(kCore.begin(), kCore.end());

  EXPECT_EQ(faultOf([&] { set.addExternal(core, URI(u"http://x"), u""); }).rule, "CP-2");
  EXPECT_TRUE(set.entries().empty());
}

TEST(RelationshipSet, GeneratedIdsSkipWhatIsTakenOrReserved) {
  RelationshipSet set{std::string()};
  set.addInternal(u"urn:t", URI(u"/a"), u"rId2");

  EXPECT_EQ(set.addInternal(u"urn:t", URI(u"/a"), u"").getId(), u"rId1");
  EXPECT_EQ(set.addInternal(u"urn:t", URI(u"/a"), u"").getId(), u"rId3");
  for (int i = 4; i < 100; ++i) set.addInternal(u"urn:t", URI(u"/a"), u"");
  EXPECT_EQ(set.addInternal(u"urn:t", URI(u"/a"), u"").getId(), u"rId102");
}

TEST(RelationshipSet, AReservedIdIsTakenWhenItIsAskedFor) {
  RelationshipSet set{std::string()};

  EXPECT_EQ(set.addInternal(u"urn:t", URI(u"/a"), u"rId100").getId(), u"rId100");
}

TEST(RelationshipSet, WhatBreaksARuleIsNotMade) {
  RelationshipSet set("x/y");
  set.addInternal(u"urn:t", URI(u"/a"), u"taken");
  const auto add = [&](const char16_t* type, const char16_t* target, const char16_t* id) {
    return faultOf([&] { set.addInternal(type, URI(target), id); });
  };

  EXPECT_EQ(add(u"urn:t", u"/a", u"taken").code, opc::ErrorCode::AlreadyExists);
  EXPECT_EQ(add(u"urn:t", u"/a", u"1").rule, "RL-4");
  EXPECT_EQ(add(u"urn:t", u"/a", u" a").rule, "RL-4");
  EXPECT_EQ(add(u"", u"/a", u"").rule, "RL-5");
  EXPECT_EQ(add(u"urn:t", u"http://a", u"").rule, "RL-7");
  EXPECT_EQ(add(u"urn:t", u"/a b", u"").rule, "RL-8");
  EXPECT_EQ(add(u"urn:t", u"/a.", u"").rule, "RL-8");
  EXPECT_EQ(add(u"urn:t", u"/_rels/.RELS", u"").rule, "RL-9");
  EXPECT_EQ(add(u"urn:\u0001", u"/a", u"").code, opc::ErrorCode::InvalidText);
  EXPECT_EQ(add(u"urn:t", u"/a#\u0001", u"").code, opc::ErrorCode::InvalidText);
  EXPECT_EQ(faultOf([&] { set.addExternal(u"urn:t", URI(u"\xD800"), u""); }).code,
            opc::ErrorCode::InvalidText);
  EXPECT_EQ(set.entries().size(), 1u);
}

TEST(RelationshipSet, RelativeTargetIsStoredAbsolute) {
  RelationshipSet set("x/y");

  const Relationship& added = set.addInternal(u"urn:t", URI(u"\u00E9.m#f"), u"");

  EXPECT_EQ(added.getTargetURI(), URI(u"/x/%C3%A9.m"));
  EXPECT_NE(set.toXml().find("Target=\"/x/%C3%A9.m#f\""), std::string::npos);
}

TEST(RelationshipSet, RemovingAnUnknownIdIsAnError) {
  RelationshipSet set{std::string()};

  const test::Fault fault = faultOf([&] { set.remove(u"x"); });

  EXPECT_EQ(fault.code, opc::ErrorCode::NotFound);
  EXPECT_EQ(fault.text, "relationship 'x' of the package: there is none of that id");
}

TEST(RelationshipSet, TextReadsBackAsTheSame) {
  RelationshipSet set{std::string()};
  set.addInternal(u"urn:<&>\"'\t\n\r", URI(u"/a"), u"b");
  set.addExternal(u"urn:t", URI(u"mailto:\u00E9?subject=\U0001F600&x"), u"a");

  const RelationshipSet again = parse(set.toXml());

  ASSERT_EQ(again.entries().size(), 2u);
  EXPECT_EQ(again.entries().front().relationship.getId(), u"b");
  EXPECT_EQ(again.find(u"b")->getType(), u"urn:<&>\"'\t\n\r");
  EXPECT_EQ(again.find(u"a")->getTargetURI(), set.find(u"a")->getTargetURI());
  EXPECT_EQ(again.find(u"a")->getTargetMode(), TargetMode::External);
}

TEST(RelationshipSet, FragmentOfAStoredTargetIsKept) {
  const RelationshipSet set = parse(test::relationshipsXml(test::relationshipXml("a", "b#c d")));

  EXPECT_EQ(set.find(u"a")->getTargetURI(), URI(u"/b"));
  EXPECT_NE(set.toXml().find("Target=\"/b#c d\""), std::string::npos);
}

TEST(RelationshipSet, KnowsWhatHadToBeMended) {
  const RelationshipSet set = parse(
      test::relationshipsXml(test::relationshipXml("a", "\\b") + test::relationshipXml("c", "/d")));

  EXPECT_TRUE(set.entries().front().corrected);
  EXPECT_FALSE(set.entries().back().corrected);
}

TEST(RelationshipSet, WhatIsAddedIsNotMarkedAsCorrected) {
  RelationshipSet set{std::string()};

  set.addInternal(u"urn:t", URI(u"b#c"), u"");
  set.addExternal(u"urn:t", URI(u"\\\\host\\b c"), u"");

  EXPECT_FALSE(set.entries().front().corrected);
  EXPECT_FALSE(set.entries().back().corrected);
}

TEST(RelationshipSet, ManyRelationshipsComeAndGo) {
  RelationshipSet set{std::string()};
  for (int i = 0; i < 20000; ++i) set.addInternal(u"urn:t", URI(u"/a"), u"");

  while (set.entries().size() > 1) {
    set.remove(std::u16string(set.entries().front().relationship.getId()));
  }

  EXPECT_EQ(set.entries().front().relationship.getId(), u"rId20002");
}
