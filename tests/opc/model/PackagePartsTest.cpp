// SPDX-License-Identifier: MIT
// Parts that are created, written and deleted; PackageWritingTest.cpp has the package around them.
#include <gtest/gtest.h>

#include "opc/interfaces/MemoryContentSource.h"
#include "opc/model/Package.h"
#include "tests/opc/model/PackageFixture.h"

using opc::ErrorCode;
using opc::interfaces::CompressionType;
using opc::interfaces::MemoryContentSource;
using opc::interfaces::OpenMode;
using opc::model::ContentType;
using opc::model::StandardPartInfo;
using opc::model::URI;
using test::faultOf;
using test::MemoryPackage;
using test::partName;
using test::relationshipsXml;
using test::relationshipXml;

namespace {

using Names = std::vector<std::string>;

}  // namespace

TEST(PackageWriting, ReplacingAPartKeepsItsRelationshipAndId) {
  MemoryPackage memory;
  memory.package.open(OpenMode::Create);
  memory.create(u"/metadata/x.xml", u"application/vnd.x+xml", "first");
  memory.package.createInternalRelationship(u"urn:x", URI(u"/metadata/x.xml"), u"");
  memory.package.close(false);

  memory.package.open(OpenMode::Modify);
  memory.package.deletePart(partName(u"/metadata/x.xml"));
  memory.create(u"/metadata/x.xml", u"application/vnd.x+xml", "second");
  memory.package.close(false);

  memory.package.open(OpenMode::Read);
  ASSERT_EQ(memory.package.getRelationships().size(), 1u);
  EXPECT_EQ(memory.package.getRelationships()[0].getId(), u"rId1");
  EXPECT_EQ(memory.textOf(u"/metadata/x.xml"), "second");
  EXPECT_EQ(memory.disk.names(), (Names{"[Content_Types].xml", "_rels/.rels", "metadata/x.xml"}));
}

TEST(PackageWriting, DeletingWhatIsNotThereIsAnError) {
  MemoryPackage memory;
  memory.with("a.unknown");
  memory.package.open(OpenMode::Modify);

  EXPECT_EQ(faultOf([&] { memory.package.deletePart(partName(u"/b.m")); }).code,
            ErrorCode::NotFound);
  EXPECT_EQ(faultOf([&] { memory.package.deletePart(partName(u"/a.unknown")); }).code,
            ErrorCode::NotFound);
}

TEST(PackageWriting, ForbiddenNamesAreRefused) {
  MemoryPackage memory;
  memory.with("a.xml").with("d/b.xml");
  memory.package.open(OpenMode::Modify);
  memory.create(u"/new/c.xml", u"application/xml", "");
  const auto create = [&](std::u16string_view name) {
    EXPECT_FALSE(memory.package.canCreatePart(partName(name)));
    return faultOf([&] { memory.create(name, u"application/xml", ""); });
  };

  EXPECT_EQ(create(u"/A.XML").text,
            "cannot create part '/A.XML' in 'memory.kraddon': part '/a.xml' has that name");
  EXPECT_EQ(create(u"/A.XML").code, ErrorCode::AlreadyExists);
  EXPECT_EQ(create(u"/NEW/c.xml").code, ErrorCode::AlreadyExists);
  EXPECT_EQ(create(u"/a.xml/x").rule, "PN-9");
  EXPECT_EQ(create(u"/a.xml/x/y/z").rule, "PN-9");
  EXPECT_EQ(create(u"/new/c.xml/x").rule, "PN-9");
  EXPECT_EQ(create(u"/D").rule, "PN-9");
  EXPECT_EQ(create(u"/New").rule, "PN-9");
  EXPECT_EQ(create(u"/x/_RELS/y.rels").rule, "PN-10");
  EXPECT_TRUE(memory.package.canCreatePart(partName(u"/d/a")));
  EXPECT_TRUE(memory.package.canCreatePart(partName(u"/a")));
}

TEST(PackageWriting, DeletingFreesNameAndFolders) {
  MemoryPackage memory;
  memory.with("d/e/b.xml").with("d/a.xml");
  memory.package.open(OpenMode::Modify);

  memory.package.deletePart(partName(u"/d/e/b.xml"));

  EXPECT_TRUE(memory.package.canCreatePart(partName(u"/d/e")));
  EXPECT_TRUE(memory.package.canCreatePart(partName(u"/d/e/B.xml")));
  EXPECT_FALSE(memory.package.canCreatePart(partName(u"/d")));
  memory.package.deletePart(partName(u"/d/a.xml"));
  EXPECT_TRUE(memory.package.canCreatePart(partName(u"/d")));
}

TEST(PackageWriting, AFolderIsTakenUntilTheLastPartInItIsDeleted) {
  MemoryPackage memory;
  memory.with("d/1.m").with("d/2.m").with("e/1.m").with("d/3.m").with("d/4.m").with("f/1.m");
  memory.package.open(OpenMode::Modify);

  for (const char16_t* name : {u"/d/1.m", u"/d/2.m", u"/d/3.m", u"/d/4.m"}) {
    EXPECT_FALSE(memory.package.canCreatePart(partName(u"/D")));
    memory.package.deletePart(partName(name));
  }

  EXPECT_TRUE(memory.package.canCreatePart(partName(u"/D")));
  EXPECT_FALSE(memory.package.canCreatePart(partName(u"/e")));
}

TEST(PackageWriting, ANewPartReplacesAnItemThatIsNotAPart) {
  MemoryPackage memory;
  memory.with("x.unknown", "old").with("y.unknown", "other");
  memory.with("_rels/new.m.rels", relationshipsXml(relationshipXml("r", "/x")));
  memory.package.open(OpenMode::Modify);

  memory.create(u"/X.unknown", u"text/plain", "new");
  memory.create(u"/new.m", u"text/plain", "");

  EXPECT_TRUE(memory.package.getPart(partName(u"/new.m"))->getRelationships().empty());
  memory.package.close(false);
  EXPECT_EQ(memory.disk.bytes("X.unknown"), "new");
  EXPECT_FALSE(memory.disk.has("x.unknown"));
  EXPECT_FALSE(memory.disk.has("_rels/new.m.rels"));
  memory.package.open(OpenMode::Read);
  EXPECT_FALSE(memory.package.hasPart(partName(u"/y.unknown")));
}

TEST(PackageWriting, WritingAnExistingPartReplacesItsContentAndKeepsItsIdAndRelationships) {
  MemoryPackage memory;
  memory.with("a.m", "old").with("_rels/a.m.rels", relationshipsXml(relationshipXml("r", "/x")));
  memory.disk.items->at(1).executable = true;
  memory.package.open(OpenMode::Modify);
  const auto part = memory.package.getPart(partName(u"/a.m"));
  const auto id = part->id();

  test::writeText(*part->getOutputStream(), "newer");

  EXPECT_EQ(test::readAll(*part->getInputStream()), "newer");
  test::writeText(*part->getOutputStream(), "newest");
  EXPECT_EQ(memory.package.getPart(partName(u"/a.m"))->id(), id);
  std::size_t visited = 0;
  memory.package.visitParts("", [&](auto) { ++visited; });
  EXPECT_EQ(visited, 1u);
  memory.package.close(false);
  EXPECT_EQ(memory.disk.bytes("a.m"), "newest");
  EXPECT_TRUE(memory.disk.has("_rels/a.m.rels"));
  EXPECT_TRUE(memory.disk.items->back().executable);
  EXPECT_EQ(memory.disk.items->size(), 3u);
}

TEST(PackageWriting, WritingAPartInPiecesMakesItWhole) {
  MemoryPackage memory;
  memory.with("a.m/[0].piece", "x").with("a.m/[1].last.piece", "y");
  memory.package.open(OpenMode::Modify);

  test::writeText(*memory.package.getPart(partName(u"/a.m"))->getOutputStream(), "whole");
  EXPECT_EQ(memory.textOf(u"/a.m"), "whole");
  memory.package.close(false);

  EXPECT_EQ(memory.disk.names(), (Names{"[Content_Types].xml", "a.m"}));
  EXPECT_EQ(memory.disk.bytes("a.m"), "whole");
}

TEST(PackageWriting, NewPartIsKeptAsItWasAsked) {
  MemoryPackage memory;
  memory.package.open(OpenMode::Create);
  StandardPartInfo info(CompressionType::Maximum, 0);
  info.executable = true;
  info.modified = 1234567890;

  const auto id =
      memory.package.createPart(partName(u"/files/\u00E9.sh"), ContentType(u"a/b"), info,
                                std::make_unique<MemoryContentSource>("text", "x"));

  EXPECT_EQ(memory.physical.compressionOf(id), CompressionType::Maximum);
  const auto part = memory.package.partInfo(id);
  EXPECT_EQ(part.itemName, "files/%C3%A9.sh");
  EXPECT_TRUE(part.executable);
  EXPECT_EQ(part.modified, 1234567890);
  memory.package.close(false);
  EXPECT_EQ(memory.disk.bytes("files/%C3%A9.sh"), "text");
}

TEST(PackageWriting, AStreamOfANewPartKeepsItsCompression) {
  MemoryPackage memory;
  memory.package.open(OpenMode::Create);
  const auto part = memory.package.createPart(partName(u"/a.m"), ContentType(u"a/b"),
                                              StandardPartInfo(CompressionType::Fast, 0));

  part->getOutputStream();

  EXPECT_EQ(memory.physical.itemCount(), 1u);
  EXPECT_EQ(memory.physical.compressionOf(part->id()), CompressionType::Fast);
}

TEST(PackageWriting, APartFromASourceMayBeWrittenToo) {
  MemoryPackage memory;
  memory.package.open(OpenMode::Create);
  memory.package.createPart(partName(u"/a.m"), ContentType(u"a/b"),
                            StandardPartInfo(CompressionType::Normal, 0),
                            std::make_unique<MemoryContentSource>("source", "x"));
  EXPECT_EQ(memory.textOf(u"/a.m"), "source");

  test::writeText(*memory.package.getPart(partName(u"/a.m"))->getOutputStream(), "stream");
  memory.package.close(false);

  EXPECT_EQ(memory.disk.bytes("a.m"), "stream");
}

TEST(PackageWriting, AHundredThousandPartsAreCreatedAndDeleted) {
  MemoryPackage memory;
  memory.package.open(OpenMode::Create);
  const auto nameOf = [](int i) {
    const std::string name = "/files/" + std::to_string(i % 100) + "/" + std::to_string(i) + ".e" +
                             std::to_string(i % 1000);
    return partName(std::u16string(name.begin(), name.end()));
  };
  for (int i = 0; i < 100000; ++i) {
    memory.package.createPart(nameOf(i), ContentType(u"text/plain"),
                              StandardPartInfo(CompressionType::Normal, 0),
                              std::make_unique<MemoryContentSource>("", "x"));
  }
  for (int i = 0; i < 100000; i += 2) memory.package.deletePart(nameOf(i));

  memory.package.close(false);

  EXPECT_EQ(memory.disk.items->size(), 50001u);
  memory.package.open(OpenMode::Read);
  EXPECT_TRUE(memory.package.hasPart(nameOf(99999)));
  EXPECT_FALSE(memory.package.hasPart(nameOf(99998)));
}
