// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "opc/model/Package.h"
#include "tests/opc/model/PackageFixture.h"

using opc::ErrorCode;
using opc::interfaces::ItemKind;
using opc::interfaces::OpenMode;
using test::faultOf;
using test::MemoryPackage;
using test::partName;
using test::relationshipsXml;

namespace {

using Names = std::vector<std::string>;

}  // namespace

TEST(PackageItems, APackageOfPartsHasNeitherStrayNorUntypedOnes) {
  MemoryPackage memory;
  memory.with("a.m").with("b.m/[0].last.piece").with("_rels/.rels", relationshipsXml(""));
  memory.with("_rels/a.m.rels", relationshipsXml(""));
  memory.package.open(OpenMode::Read);

  EXPECT_EQ(memory.package.strayItems(), Names{});
  EXPECT_EQ(memory.package.untypedItems(), Names{});
}

TEST(PackageItems, StrayOnesAreExactlyWhatACommitDrops) {
  MemoryPackage memory;
  const Names strays = {"[trash]/0000.dat",
                        "a b.xml",
                        "/c.xml",
                        "p.m/[0].piece",
                        "p.m/[2].last.piece",
                        "link.m",
                        "_rels/gone.m.rels",
                        "_rels/lost.m.rels/[0].piece",
                        "_rels/lost.m.rels/[1].last.piece"};
  memory.with("a.m").with("u.unknown").with("folder/");
  for (const std::string& name : strays) memory.with(name, relationshipsXml(""));
  for (auto& item : *memory.disk.items) {
    if (item.name == "folder/") item.kind = ItemKind::Folder;
    if (item.name == "link.m") item.kind = ItemKind::SymbolicLink;
  }
  memory.package.open(OpenMode::Modify);

  EXPECT_EQ(memory.package.strayItems(), strays);

  memory.create(u"/new.m", u"text/plain", "");
  memory.package.close(false);
  EXPECT_EQ(memory.disk.names(), (Names{"[Content_Types].xml", "a.m", "u.unknown", "new.m"}));
  memory.package.open(OpenMode::Read);
  EXPECT_EQ(memory.package.strayItems(), Names{});
}

TEST(PackageItems, UntypedOnesAreKept) {
  MemoryPackage memory;
  memory.with("a.m").with("u.unknown").with("Files/v").with("w.no/[0].last.piece");
  memory.package.open(OpenMode::Modify);

  EXPECT_EQ(memory.package.untypedItems(), (Names{"u.unknown", "Files/v", "w.no/[0].last.piece"}));

  memory.package.deletePart(partName(u"/a.m"));
  memory.package.close(false);
  EXPECT_EQ(memory.disk.names(),
            (Names{"[Content_Types].xml", "u.unknown", "Files/v", "w.no/[0].last.piece"}));
}

TEST(PackageItems, TheTypeOfRelationshipsDoesNotMakeUntypedOnesParts) {
  MemoryPackage memory;
  memory.disk.add("[Content_Types].xml",
                  std::string(test::kTypesStart) +
                      "<Default Extension=\"m\" ContentType=\"text/plain\"/></Types>");
  memory.with("a.m").with("data/b.rels");
  memory.package.open(OpenMode::Modify);

  memory.package.createInternalRelationship(u"urn:t", opc::model::URI(u"/a.m"), u"r");
  memory.package.close(false);

  memory.package.open(OpenMode::Read);
  EXPECT_EQ(memory.package.untypedItems(), Names{"data/b.rels"});
  EXPECT_FALSE(memory.package.hasPart(partName(u"/data/b.rels")));
  EXPECT_TRUE(memory.package.hasRelationship(u"r"));
}

TEST(PackageItems, ItemsThatPartsReplacedAreNoLongerListed) {
  MemoryPackage memory;
  memory.with("a.unknown").with("_rels/b.m.rels", relationshipsXml(""));
  memory.package.open(OpenMode::Modify);

  memory.create(u"/a.unknown", u"text/plain", "");
  memory.create(u"/b.m", u"text/plain", "");

  EXPECT_EQ(memory.package.untypedItems(), Names{});
  EXPECT_EQ(memory.package.strayItems(), Names{});
}

TEST(PackageItems, AreKnownOnlyWhileThePackageIsOpen) {
  MemoryPackage memory;

  EXPECT_EQ(faultOf([&] { memory.package.strayItems(); }).code, ErrorCode::InvalidState);
  EXPECT_EQ(faultOf([&] { memory.package.untypedItems(); }).code, ErrorCode::InvalidState);
}
