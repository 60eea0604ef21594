// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "opc/model/Package.h"
#include "tests/opc/model/PackageFixture.h"

using opc::ErrorCode;
using opc::interfaces::OpenMode;
using opc::model::URI;
using test::Fault;
using test::faultOf;
using test::MemoryPackage;
using test::partName;
using test::relationshipsXml;
using test::relationshipXml;

namespace {

const std::string kRelsDefault = "<Default Extension=\"rels\" ContentType=\"" +
                                 std::string(test::kRelationshipsTypeName) + "\"/>";

std::string typesOf(const MemoryPackage& memory) {
  const std::string& xml = memory.disk.bytes("[Content_Types].xml");
  return xml.substr(xml.find("<Types"));
}

bool contains(const std::string& text, std::string_view part) {
  return text.find(part) != std::string::npos;
}

using Names = std::vector<std::string>;

}  // namespace

TEST(PackageWriting, AFreshPackageBeginsWithTypesAndRelationships) {
  MemoryPackage memory;
  memory.package.open(OpenMode::Create);
  memory.create(u"/a.m", u"text/plain", "text");
  memory.package.createInternalRelationship(u"urn:t", URI(u"/a.m"), u"");

  memory.package.close(false);

  EXPECT_EQ(memory.disk.names(), (Names{"[Content_Types].xml", "_rels/.rels", "a.m"}));
  EXPECT_EQ(typesOf(memory), std::string(test::kTypesStart) +
                                 "<Default Extension=\"m\" ContentType=\"text/plain\"/>" +
                                 kRelsDefault + "</Types>");
  EXPECT_TRUE(contains(memory.disk.bytes("_rels/.rels"),
                       "<Relationship Id=\"rId1\" Type=\"urn:t\" Target=\"/a.m\"/>"));
  EXPECT_EQ(memory.disk.bytes("a.m"), "text");
  EXPECT_FALSE(memory.package.isOpen());
  EXPECT_FALSE(memory.physical.isOpen());
}

TEST(PackageWriting, ARelationshipIsRefusedWhenAPartIsInTheWayOfItsPlace) {
  for (const auto* name : {u"/_rels/.rels/.rels", u"/_RELS"}) {
    MemoryPackage memory;
    memory.package.open(OpenMode::Create);
    memory.create(name, u"text/plain", "text");

    const Fault fault =
        faultOf([&] { memory.package.createInternalRelationship(u"urn:t", URI(u"/a.m"), u""); });

    EXPECT_EQ(fault.code, ErrorCode::InvalidName) << fault.text;
    EXPECT_TRUE(contains(fault.text, "'/_rels/.rels'")) << fault.text;
    EXPECT_TRUE(memory.package.getRelationships().empty());
  }
}

TEST(PackageWriting, APartThatIsInTheWayOfRelationshipsIsRefusedInTheEnd) {
  MemoryPackage memory;
  memory.package.open(OpenMode::Create);
  memory.create(u"/a.m", u"text/plain", "text");
  memory.package.getPart(partName(u"/a.m"))
      ->createExternalRelationship(u"urn:t", URI(u"urn:x"), u"");
  memory.create(u"/_rels/a.m.rels/b.m", u"text/plain", "text");

  const Fault fault = faultOf([&] { memory.package.close(false); });

  EXPECT_EQ(fault.code, ErrorCode::InvalidName) << fault.text;
  EXPECT_TRUE(contains(fault.text, "part '/a.m'")) << fault.text;
}

TEST(PackageWriting, AnEmptyPackageHasTypesOnly) {
  MemoryPackage memory;
  memory.package.open(OpenMode::Create);

  memory.package.close(false);

  EXPECT_EQ(memory.disk.names(), Names{"[Content_Types].xml"});
  EXPECT_EQ(typesOf(memory), std::string(test::kTypesStart) + kRelsDefault + "</Types>");
}

TEST(PackageWriting, NothingChangedIsNotWritten) {
  MemoryPackage memory;
  memory.with("a.m").with("stray dir/").with("_rels/missing.xml.rels", relationshipsXml(""));
  memory.package.open(OpenMode::Modify);
  memory.package.getRelationships();
  memory.textOf(u"/a.m");

  memory.package.close(false);

  EXPECT_EQ(memory.disk.commits, 0u);
}

TEST(PackageWriting, DiscardingLeavesTheDiskAlone) {
  MemoryPackage memory;
  memory.with("a.m");
  memory.package.open(OpenMode::Modify);
  memory.package.deletePart(partName(u"/a.m"));

  memory.package.close(true);

  EXPECT_EQ(memory.disk.commits, 0u);
  EXPECT_TRUE(memory.disk.has("a.m"));
}

TEST(PackageWriting, DeletingAPartTakesItsOverrideAndRelationshipsAndNothingElse) {
  MemoryPackage memory;
  memory.disk.add("[Content_Types].xml",
                  test::typesXml("<Override PartName=\"/a.m\" ContentType=\"o/a\"/>"
                                 "<Override PartName=\"/b.m\" ContentType=\"o/b\"/>"));
  memory.with("_rels/.rels", relationshipsXml(relationshipXml("r", "/a.m")));
  memory.with("a.m").with("b.m").with("c.m");
  memory.with("_rels/a.m.rels", relationshipsXml(relationshipXml("q", "/b.m")));
  memory.with("_rels/b.m.rels", relationshipsXml(relationshipXml("q", "/a.m")));
  memory.package.open(OpenMode::Modify);

  memory.package.deletePart(partName(u"/A.M"));
  memory.package.close(false);

  EXPECT_EQ(memory.disk.names(),
            (Names{"[Content_Types].xml", "_rels/.rels", "b.m", "c.m", "_rels/b.m.rels"}));
  EXPECT_FALSE(contains(typesOf(memory), "/a.m"));
  EXPECT_TRUE(contains(typesOf(memory), "/b.m"));
  memory.package.open(OpenMode::Read);
  EXPECT_TRUE(memory.package.hasRelationship(u"r"));
  EXPECT_EQ(memory.package.getPart(partName(u"/c.m"))->getContentType().ascii(), "text/plain");
}

TEST(PackageWriting, APartOfAnotherTypeLeavesThoseOfItsExtensionAlone) {
  MemoryPackage memory;
  memory.with("a.xml");
  memory.package.open(OpenMode::Modify);

  memory.create(u"/b.xml", u"text/other", "");
  memory.package.close(false);

  memory.package.open(OpenMode::Read);
  EXPECT_EQ(memory.package.getPart(partName(u"/a.xml"))->getContentType().ascii(),
            "application/xml");
  EXPECT_EQ(memory.package.getPart(partName(u"/b.xml"))->getContentType().ascii(), "text/other");
}

TEST(PackageWriting, TypesAreNotRewrittenWhenADefaultFits) {
  MemoryPackage memory;
  memory.with("a.m");
  const std::string before = memory.disk.bytes("[Content_Types].xml");
  memory.package.open(OpenMode::Modify);

  memory.create(u"/b.m", u"text/plain", "");
  memory.package.close(false);

  EXPECT_EQ(memory.disk.bytes("[Content_Types].xml"), before);
  EXPECT_EQ(memory.disk.names(), (Names{"[Content_Types].xml", "a.m", "b.m"}));
}

TEST(PackageWriting, ASavedPackageAlwaysDeclaresTheTypeOfRels) {
  MemoryPackage memory;
  memory.disk.add("[Content_Types].xml",
                  std::string(test::kTypesStart) +
                      "<Default Extension=\"m\" ContentType=\"text/plain\"/></Types>");
  memory.package.open(OpenMode::Modify);

  memory.create(u"/b.m", u"text/plain", "");
  memory.package.close(false);

  EXPECT_TRUE(contains(typesOf(memory), kRelsDefault));
}

TEST(PackageWriting, RelationshipsGetTheirTypeAlsoBesideAnotherDefault) {
  MemoryPackage memory;
  memory.disk.add(
      "[Content_Types].xml",
      std::string(test::kTypesStart) + "<Default Extension=\"rels\" ContentType=\"x/y\"/></Types>");
  memory.package.open(OpenMode::Modify);
  memory.package.createExternalRelationship(u"urn:t", URI(u"http://x"), u"");

  memory.package.close(false);

  EXPECT_TRUE(contains(typesOf(memory), "<Override PartName=\"/_rels/.rels\" ContentType=\"" +
                                            std::string(test::kRelationshipsTypeName)));
  EXPECT_EQ(memory.faultOfOpening().rule, "none");
}

TEST(PackageWriting, ItemsThatAreNotPartsAreDropped) {
  MemoryPackage memory;
  memory.with("dir/").with("[trash]/0.dat").with("a b.m").with("p.m/[0].piece").with("x.unknown");
  memory.with("_rels/missing.m.rels", relationshipsXml(relationshipXml("r", "/x")));
  memory.package.open(OpenMode::Modify);

  memory.create(u"/new.m", u"text/plain", "");
  memory.package.close(false);

  EXPECT_EQ(memory.disk.names(), (Names{"[Content_Types].xml", "x.unknown", "new.m"}));
}

TEST(PackageWriting, TypesAndRelationshipsInPiecesAreWrittenWhole) {
  const std::string types = test::typesXml();
  const std::string rels = relationshipsXml(relationshipXml("r", "/a.m"));
  MemoryPackage memory;
  memory.disk.add("[Content_Types].xml/[0].piece", types.substr(0, 9));
  memory.disk.add("[Content_Types].xml/[1].last.piece", types.substr(9));
  memory.disk.add("_rels/.rels/[0].piece", rels.substr(0, 9));
  memory.disk.add("_rels/.rels/[1].last.piece", rels.substr(9));
  memory.package.open(OpenMode::Modify);

  memory.create(u"/b.new", u"new/new", "");
  memory.package.createInternalRelationship(u"urn:t", URI(u"/b.new"), u"");
  memory.package.close(false);

  EXPECT_EQ(memory.disk.names(), (Names{"[Content_Types].xml", "_rels/.rels", "b.new"}));
  memory.package.open(OpenMode::Read);
  EXPECT_EQ(memory.package.getRelationships().size(), 2u);
}

TEST(PackageWriting, RelationshipsOfAPartAreWrittenBesideIt) {
  MemoryPackage memory;
  memory.with("x/a.m");
  memory.package.open(OpenMode::Modify);

  memory.package.getPart(partName(u"/x/a.m"))
      ->createInternalRelationship(u"urn:t", URI(u"b.m"), u"");
  memory.package.close(false);

  EXPECT_TRUE(contains(memory.disk.bytes("x/_rels/a.m.rels"), "Target=\"/x/b.m\""));
}

TEST(PackageWriting, WithoutRelationshipsThereIsNoPartForThem) {
  MemoryPackage memory;
  memory.with("_rels/.rels", relationshipsXml(relationshipXml("r", "/a.m"))).with("a.m");
  memory.with("_rels/a.m.rels", relationshipsXml(relationshipXml("r", "/a.m")));
  memory.package.open(OpenMode::Modify);

  memory.package.deleteRelationship(u"r");
  memory.package.getPart(partName(u"/a.m"))->deleteRelationship(u"r");
  memory.package.close(false);

  EXPECT_EQ(memory.disk.names(), (Names{"[Content_Types].xml", "a.m"}));
}

TEST(PackageWriting, RelationshipsThatWereNotTouchedKeepTheirBytes) {
  const std::string rels = relationshipsXml(" " + relationshipXml("r", "a.m") + "<!-- mine -->");
  MemoryPackage memory;
  memory.with("_rels/.rels", rels).with("a.m");
  memory.package.open(OpenMode::Modify);
  memory.package.getRelationships();

  memory.create(u"/b.new", u"new/new", "");
  memory.package.close(false);

  EXPECT_EQ(memory.disk.bytes("_rels/.rels"), rels);
}

TEST(PackageWriting, AFailedCommitLeavesEverythingForAnotherTry) {
  MemoryPackage memory;
  memory.with("old.m");
  memory.package.open(OpenMode::Modify);
  memory.create(u"/a.new", u"new/new", "text");
  memory.package.createInternalRelationship(u"urn:t", URI(u"/a.new"), u"");
  memory.physical.failCommits(2);

  EXPECT_EQ(faultOf([&] { memory.package.close(false); }).code, ErrorCode::FileSystem);
  EXPECT_TRUE(memory.package.isOpen());
  EXPECT_EQ(memory.disk.names(), (Names{"[Content_Types].xml", "old.m"}));
  EXPECT_EQ(memory.textOf(u"/a.new"), "text");
  memory.create(u"/b.newer", u"newer/newer", "more");
  EXPECT_EQ(faultOf([&] { memory.package.close(false); }).code, ErrorCode::FileSystem);
  memory.package.close(false);

  EXPECT_EQ(memory.disk.names(),
            (Names{"[Content_Types].xml", "_rels/.rels", "old.m", "a.new", "b.newer"}));
  memory.package.open(OpenMode::Read);
  EXPECT_EQ(memory.package.getRelationships().size(), 1u);
  EXPECT_TRUE(memory.package.hasPart(partName(u"/b.newer")));
}

TEST(PackageWriting, AFailedFreshPackageKeepsItsOrder) {
  MemoryPackage memory;
  memory.package.open(OpenMode::Create);
  memory.create(u"/a.m", u"text/plain", "text");
  memory.package.createInternalRelationship(u"urn:t", URI(u"/a.m"), u"");
  memory.physical.failCommits(1);
  EXPECT_EQ(faultOf([&] { memory.package.close(false); }).code, ErrorCode::FileSystem);

  memory.create(u"/b.x", u"x/x", "");
  memory.package.close(false);

  EXPECT_EQ(memory.disk.names(), (Names{"[Content_Types].xml", "_rels/.rels", "a.m", "b.x"}));
}
