// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "opc/model/Relationship.h"
#include "tests/opc/conformance/support/PackageSpec.h"
#include "tests/opc/conformance/support/ReadPackage.h"
#include "tests/opc/conformance/support/WrittenZip.h"

namespace test::conformance {
namespace {

using opc::model::Package;
using opc::model::PartName;
using opc::model::URI;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;

constexpr const char* kPackageRelations = "_rels/.rels";

std::string relationsOf(const std::function<void(Package&)>& fill) {
  return WrittenZip(writtenPackage(fill)).content(kPackageRelations);
}

/// Adds an internal relationship of the package.
void relate(Package& package, std::u16string_view target, std::u16string_view id = u"",
            std::u16string_view type = u"urn:t") {
  package.createInternalRelationship(type, URI(std::u16string(target)), id);
}

std::string refusalOfRelating(std::u16string_view target, std::u16string_view id = u"",
                              std::u16string_view type = u"urn:t") {
  return refusalOf(
      [&] { writtenPackage([&](Package& package) { relate(package, target, id, type); }); });
}

std::vector<std::u16string> idsOf(Package& package) {
  std::vector<std::u16string> ids;
  for (const auto& one : package.getRelationships()) ids.push_back(one.getId());
  return ids;
}

}  // namespace

TEST(RuleRL1, ThePartOfASourceWithoutRelationshipsIsNotWritten) {
  const WrittenZip zip(writtenPackage([](Package& package) {
    addPart(package, u"/x/y.m")->createInternalRelationship(u"urn:t", URI(u"z.m"), u"rId1");
    addPart(package, u"/x/z.m");
  }));

  EXPECT_THAT(zip.names(), Contains("x/_rels/y.m.rels"));
  EXPECT_THAT(zip.names(), Not(Contains("x/_rels/z.m.rels")));
}

TEST(RuleRL1, ThePartOfASourceWithoutRelationshipsAnyMoreGoes) {
  PackageSpec spec;
  spec.addRelations("_rels/b.m.rels", relationXml("rId1", "a.xml"));

  const WrittenZip zip(changedPackage(spec.bytes(), [](Package& package) {
    package.getPart(PartName(u"/b.m"))->deleteRelationship(u"rId1");
  }));

  EXPECT_THAT(zip.names(), Not(Contains("_rels/b.m.rels")));
}

TEST(RuleRL4, AnInvalidIdIsNotWritten) {
  for (const auto* id : {u"1", u"a b", u"a:b", u"-a"}) {
    EXPECT_EQ(refusalOfRelating(u"/a", id), "RL-4");
  }
}

TEST(RuleRL4, AnIdThatIsTakenIsNotWritten) {
  const auto twice = [] {
    writtenPackage([](Package& package) {
      relate(package, u"/a", u"x");
      relate(package, u"/b", u"x");
    });
  };

  EXPECT_EQ(refusalOf(twice), "RL-4");
}

TEST(RuleRL5, AnEmptyTypeIsNotWritten) {
  EXPECT_EQ(refusalOfRelating(u"/a", u"", u""), "RL-5");
}

TEST(RuleRL7, AnInternalTargetWithSchemeOrHostIsNotWritten) {
  EXPECT_EQ(refusalOfRelating(u"http://host.example/a"), "RL-7");
  EXPECT_EQ(refusalOfRelating(u"//host.example/a"), "RL-7");
  EXPECT_EQ(refusalOfRelating(u""), "RL-7");
}

TEST(RuleRL8, TheTargetIsWrittenAsTheAbsoluteCanonicalName) {
  const WrittenZip zip(writtenPackage([](Package& package) {
    addPart(package, u"/c/d.m")->createInternalRelationship(u"urn:t", URI(u"../\u00e9.m"), u"rId1");
  }));

  EXPECT_THAT(zip.content("c/_rels/d.m.rels"), HasSubstr("Target=\"/%C3%A9.m\""));
}

TEST(RuleRL8, ATargetThatWouldHaveToBeMendedIsNotWritten) {
  for (const auto* target : {u"a\\b", u"a b", u"%61", u"a?q"}) {
    EXPECT_EQ(refusalOfRelating(target), "RL-8");
  }
}

TEST(RuleRL9, ARelationshipsPartIsNoTarget) {
  EXPECT_EQ(refusalOfRelating(u"/_rels/.rels"), "RL-9");
  EXPECT_EQ(refusalOfRelating(u"/x/_RELS/y.Rels"), "RL-9");
}

TEST(RuleRL10, AnExternalTargetIsWrittenAsItIs) {
  const std::string text = relationsOf([](Package& package) {
    package.createExternalRelationship(u"urn:t", URI(u"..\\x y?q#f"), u"rId1");
  });

  EXPECT_THAT(text, HasSubstr("Target=\"..\\x y?q#f\""));
  EXPECT_THAT(text, HasSubstr("TargetMode=\"External\""));
}

TEST(RuleRL11, AMissingTargetIsRefusedOnUse) {
  PackageSpec spec;
  spec.relationships = relationXml("rId2", "missing.m");

  changedPackage(spec.bytes(), [](Package& package) {
    const auto target = package.getRelationship(u"rId2").getTargetURI().toString();
    EXPECT_FALSE(package.hasPart(PartName(target)));
    EXPECT_EQ(refusalOf([&] { package.getPart(PartName(target)); }), "");
  });
}

TEST(RuleRL12, SavingDropsRelationshipsOfAMissingPart) {
  PackageSpec spec;
  spec.addRelations("_rels/gone.m.rels", relationXml("rId1", "a.xml"));

  const WrittenZip zip(
      changedPackage(spec.bytes(), [](Package& package) { addPart(package, u"/new.m"); }));

  EXPECT_THAT(zip.names(), Not(Contains("_rels/gone.m.rels")));
}

TEST(RuleRL13, SavingDoesNotKeepWhatWasIgnored) {
  PackageSpec spec;
  spec.wholeRelations =
      "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\" "
      "xmlns:mc=\"http://schemas.openxmlformats.org/markup-compatibility/2006\" "
      "xmlns:q=\"urn:q\" mc:Ignorable=\"q\"><q:x/>" +
      relationXml("rId1", "a.xml", "q:y=\"\"") + "</Relationships>";

  const WrittenZip zip(
      changedPackage(spec.bytes(), [](Package& package) { relate(package, u"/b.m"); }));

  EXPECT_THAT(zip.content(kPackageRelations), Not(HasSubstr("urn:q")));
  EXPECT_THAT(zip.content(kPackageRelations), HasSubstr("\"rId1\""));
}

TEST(RuleRL15, AFragmentIsKeptInSaving) {
  PackageSpec spec;
  spec.relationships = relationXml("rId2", "b.m#f");

  const WrittenZip zip(
      changedPackage(spec.bytes(), [](Package& package) { relate(package, u"/b.m"); }));

  EXPECT_THAT(zip.content(kPackageRelations), HasSubstr("/b.m#f\""));
}

TEST(RuleRL16, TypesAreLookedUpAsExactTexts) {
  writtenPackage([](Package& package) {
    relate(package, u"/a", u"x", u"urn:t%41");

    EXPECT_EQ(package.getRelationshipsByType(u"urn:t%41").size(), 1u);
    EXPECT_EQ(package.getRelationshipsByType(u"urn:tA").size(), 0u);
    EXPECT_EQ(package.getRelationshipsByType(u"URN:t%41").size(), 0u);
  });
}

TEST(RuleRL17, AGeneratedIdIsNeitherTakenNorReserved) {
  writtenPackage([](Package& package) {
    relate(package, u"/a", u"rId2");
    relate(package, u"/a", u"rId5");

    for (int i = 0; i < 200; ++i) relate(package, u"/a");

    const auto ids = idsOf(package);
    EXPECT_EQ(std::set<std::u16string>(ids.begin(), ids.end()).size(), 202u);
    EXPECT_THAT(ids, Not(Contains(std::u16string(u"rId100"))));
    EXPECT_THAT(ids, Not(Contains(std::u16string(u"rId101"))));
  });
}

TEST(RuleRL17, AnUnknownIdIsNotDeleted) {
  writtenPackage([](Package& package) {
    EXPECT_THROW(package.deleteRelationship(u"unknown"), opc::Exception);
  });
}

TEST(RuleRL18, DeletingAPartDeletesItsRelationshipsAndLeavesThoseToIt) {
  PackageSpec spec;
  spec.types = overrideXml("/b.m", "text/own");
  spec.addRelations("_rels/b.m.rels", relationXml("rId1", "a.xml"));
  spec.relationships = relationXml("rId2", "b.m");

  const std::string bytes =
      changedPackage(spec.bytes(), [](Package& package) { package.deletePart(PartName(u"/b.m")); });

  const WrittenZip zip(bytes);
  EXPECT_THAT(zip.names(), Not(Contains("_rels/b.m.rels")));
  EXPECT_THAT(zip.names(), Not(Contains("b.m")));
  EXPECT_THAT(zip.content("[Content_Types].xml"), Not(HasSubstr("text/own")));
  EXPECT_EQ(readPackage(bytes).targets.at("rId2"), "/b.m");
}

}  // namespace test::conformance
