// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>

#include "opc/model/Package.h"
#include "tests/opc/model/PackageFixture.h"

using opc::ErrorCode;
using opc::interfaces::ItemKind;
using opc::interfaces::OpenMode;
using opc::model::PartId;
using test::Fault;
using test::faultOf;
using test::MemoryPackage;
using test::partName;
using test::relationshipsXml;
using test::relationshipXml;
using testing::Test;

namespace {

// Items beside the content types stream; an item is a name, or "name=bytes".
struct OpeningCase {
  std::vector<const char*> items;
  const char* rule;
};

void PrintTo(const OpeningCase& c, std::ostream* out) {
  for (const char* item : c.items) *out << item << " ";
}

class Opening : public testing::TestWithParam<OpeningCase> {};

const OpeningCase kOpenings[] = {
    {{"a.xml", "b.xml", "c/a.xml"}, "none"},
    // Equal names.
    {{"a.xml", "A.XML"}, "PN-8"},
    {{"a.xml", "a.xml"}, "PN-8"},
    {{"f/\xC3\xA9.xml", "F/%c3%A9.xml"}, "PN-8"},
    {{"%C3%89.xml", "%C3%A9.xml"}, "none"},
    {{"_rels/a.xml.rels=R", "a.xml", "_RELS/a.xml.rels=R"}, "PN-8"},
    // Derived names.
    {{"a.xml", "a.xml/b.xml"}, "PN-9"},
    {{"a.xml/b/c/d.xml", "A.xml"}, "PN-9"},
    {{"x/a.xml/b.xml", "x/z.xml", "y/q.xml", "x/A.xml"}, "PN-9"},
    {{"\xC3\xA9.xml/b.xml", "%C3%A9.xml"}, "PN-9"},
    {{"a.m", "a.m-b.m", "a.mx/c.xml", "a.m.m"}, "none"},
    {{"a.xml", "a.xml/"}, "none"},
    {{"a.xml", "a.xml/b.unknown"}, "none"},
    {{"a.unknown", "a.unknown/b.xml"}, "none"},
    // What is not a part is ignored.
    {{"", "/a.xml", "x/", "a b.xml", "c.xml.", "[trash]/0000.dat", "../x.xml", "a\\b.xml"}, "none"},
    {{"a b.xml", "A b.xml"}, "none"},
    // Content types stream.
    {{"[content_types].XML=T"}, "CT-1"},
    {{"[Content_Types].xml=T"}, "CT-1"},
    {{"[Content_Types].xml/[0].last.piece=T"}, "IL-3"},
    // No content type.
    {{"a.unknown", "b"}, "none"},
    {{"a.unknown", "_rels/a.unknown.rels=R"}, "CT-10"},
    {{"a.unknown", "_rels/.rels=->/A.unknown"}, "CT-10"},
    {{"a.xml", "_rels/.rels=->/a.xml"}, "none"},
    {{"_rels/.rels=->/missing.xml"}, "none"},
    // Relationships parts.
    {{"_RELS/.RELS=->/a.xml"}, "none"},
    {{"_rels/.rels=->/_rels/a.rels"}, "RL-9"},
    {{"_rels/_rels/.rels.rels=R"}, "RL-9"},
    {{"_rels/.rels=R", "_rels/_rels/.rels.rels=R"}, "RL-9"},
    {{"_rels/missing.xml.rels=R"}, "none"},
    {{"a/_rels/.rels=R"}, "none"},
    {{"_rels/.rels=bad"}, ""},
    {{"a.xml", "_rels/a.xml.rels=bad"}, "none"},
    // Pieces.
    {{"a.xml/[0].piece", "a.xml/[1].last.piece"}, "none"},
    {{"a.xml/[0].piece", "a.xml/[0].PIECE", "a.xml/[1].last.piece"}, "IL-3"},
    {{"a.xml/[0].piece", "A.xml/[0].piece"}, "IL-3"},
    {{"a.xml/[0].piece", "a.xml/[1].piece", "a.xml/[1].last.piece"}, "IL-3"},
    {{"a.xml", "a.xml/[0].last.piece"}, "IL-3"},
    {{"a.xml", "a.xml/[0].piece"}, "none"},
    {{"a.xml/[0].last.piece", "a.xml/b.xml"}, "PN-9"},
    {{"a.unknown/[0].last.piece", "_rels/a.unknown.rels=R"}, "CT-10"},
    {{"_rels/.rels/[0].last.piece=->/a.unknown", "a.unknown"}, "CT-10"},
};

std::string bytesOf(std::string_view text) {
  if (text == "T") return test::typesXml();
  if (text == "R") return relationshipsXml("");
  if (text.starts_with("->")) return relationshipsXml(relationshipXml("r", text.substr(2)));
  return std::string(text);
}

TEST_P(Opening, FindsWhatShowsFromDirectoryTypesAndRelationships) {
  MemoryPackage memory;
  memory.disk.add("[Content_Types].xml", test::typesXml());
  for (const std::string_view item : GetParam().items) {
    const std::size_t equals = item.find('=');
    const bool bare = equals == std::string_view::npos;
    memory.with(std::string(item.substr(0, equals)), bytesOf(bare ? "" : item.substr(equals + 1)));
  }

  const Fault fault = memory.faultOfOpening();

  EXPECT_EQ(fault.rule, GetParam().rule) << fault.text;
  EXPECT_EQ(memory.physical.isOpen(), fault.rule == "none");
}

INSTANTIATE_TEST_SUITE_P(Packages, Opening, testing::ValuesIn(kOpenings));

}  // namespace

TEST(PackageReading, APackageWithoutContentTypesIsRefused) {
  MemoryPackage memory;
  memory.disk.add("a.xml", "");

  const Fault fault = memory.faultOfOpening();

  EXPECT_EQ(fault.rule, "CT-1");
  EXPECT_EQ(fault.text,
            "cannot open package 'memory.kraddon': it is a ZIP file, but not a package: it has "
            "no [Content_Types].xml");
}

TEST(PackageReading, IncompleteContentTypesInPiecesAreRefused) {
  MemoryPackage memory;
  memory.disk.add("[Content_Types].xml/[0].piece", test::typesXml());

  EXPECT_EQ(memory.faultOfOpening().rule, "CT-1");
}

TEST(PackageReading, ContentTypesAreFoundInAnyCaseAndInPieces) {
  const std::string types = test::typesXml();
  MemoryPackage spelled;
  spelled.disk.add("a.xml", "").add("[content_TYPES].XML", types);
  MemoryPackage pieces;
  pieces.disk.add("a.xml", "")
      .add("[Content_Types].xml/[1].Last.Piece", types.substr(50))
      .add("[content_types].xml/[0].piece", types.substr(0, 50));

  for (MemoryPackage* memory : {&spelled, &pieces}) {
    memory->package.open(OpenMode::Read);
    EXPECT_TRUE(memory->package.hasPart(partName(u"/a.xml")));
  }
}

TEST(PackageReading, AFaultOfTheContentTypesNamesThePackageOnce) {
  MemoryPackage memory;
  memory.disk.add("[Content_Types].xml", "<Types/>");

  const Fault fault = memory.faultOfOpening();

  EXPECT_EQ(fault.text,
            "cannot open package 'memory.kraddon': content types stream: root element 'Types': it "
            "is not 'Types' of the content types namespace");
}

TEST(PackageReading, AFaultOfTheRelationshipsNamesTheirPart) {
  MemoryPackage memory;
  memory.with("_rels/.rels", relationshipsXml(relationshipXml("1", "/a")));

  const Fault fault = memory.faultOfOpening();

  EXPECT_EQ(fault.text,
            "cannot open package 'memory.kraddon': part '/_rels/.rels': relationship '1' of the "
            "package: the id is not an XML name without a colon");
}

TEST(PackageReading, ARelationshipsPartMayGoWithoutTypeButNotWithAnother) {
  const std::string rels = relationshipsXml("");
  MemoryPackage without;
  without.disk.add("[Content_Types].xml", std::string(test::kTypesStart) + "</Types>");
  without.with("_rels/.rels", rels);
  MemoryPackage other;
  other.disk.add("[Content_Types].xml",
                 test::typesXml("<Override PartName=\"/_rels/.rels\" ContentType=\"x/y\"/>"));
  other.with("_rels/.rels", rels);

  EXPECT_EQ(without.faultOfOpening().rule, "none");
  EXPECT_EQ(other.faultOfOpening().rule, "CT-12");
}

TEST(PackageReading, LinksAndOtherSpecialItemsAreNotParts) {
  MemoryPackage memory;
  memory.with("a.xml").with("A.xml").with("b.xml");
  memory.disk.items->at(2).kind = ItemKind::SymbolicLink;
  memory.disk.items->at(3).kind = ItemKind::Special;

  memory.package.open(OpenMode::Read);

  EXPECT_TRUE(memory.package.hasPart(partName(u"/a.xml")));
  EXPECT_FALSE(memory.package.hasPart(partName(u"/b.xml")));
}

TEST(PackageReading, OpeningReadsTypesAndPackageRelationshipsOnly) {
  MemoryPackage memory;
  memory.with("a.xml", "not xml")
      .with("_rels/.rels", relationshipsXml(relationshipXml("r", "a.xml")));
  memory.with("_rels/a.xml.rels", "not xml").with("b.m");

  memory.package.open(OpenMode::Read);
  memory.package.getPart(partName(u"/a.xml"));

  const std::vector<std::string> expected = {"[Content_Types].xml", "_rels/.rels"};
  EXPECT_EQ(memory.physical.itemsRead(), expected);
}

TEST(PackageReading, PartIsFoundInEverySpelling) {
  MemoryPackage memory;
  memory.with("Files/\xC3\xA9 x.m").with("Files/\xC3\xA9.M", "text");
  memory.package.open(OpenMode::Read);

  for (const char16_t* name : {u"/Files/\u00E9.M", u"/files/%c3%a9.m", u"/FILES/%C3%A9.m"}) {
    EXPECT_TRUE(memory.package.hasPart(partName(name)));
    EXPECT_EQ(memory.textOf(name), "text");
  }
  EXPECT_FALSE(memory.package.hasPart(partName(u"/files/%C3%89.m")));
}

TEST(PackageReading, MissingPartIsNamed) {
  MemoryPackage memory;
  memory.with("a.xml");
  memory.package.open(OpenMode::Read);

  const Fault fault = faultOf([&] { memory.package.getPart(partName(u"/b.xml")); });

  EXPECT_EQ(fault.code, ErrorCode::NotFound);
  EXPECT_EQ(fault.text,
            "cannot get part '/b.xml' of 'memory.kraddon': the package has no such part");
}

TEST(PackageReading, AnItemWithoutAContentTypeIsNotAPart) {
  MemoryPackage memory;
  memory.with("a.unknown").with("[trash]/0000.dat");
  memory.package.open(OpenMode::Read);

  EXPECT_FALSE(memory.package.hasPart(partName(u"/a.unknown")));
}

TEST(PackageReading, PartKnowsItsNameAndType) {
  MemoryPackage memory;
  memory.disk.add("[Content_Types].xml",
                  test::typesXml("<Override PartName=\"/B.xml\" ContentType=\"o/o\"/>"));
  memory.with("b.XML");
  memory.package.open(OpenMode::Read);

  const auto part = memory.package.getPart(partName(u"/B.xml"));

  EXPECT_EQ(part->getName().toString(), u"/b.XML");
  EXPECT_EQ(part->getContentType().ascii(), "o/o");
  EXPECT_EQ(memory.package.contentTypeOf(part->id()).ascii(), "o/o");
  EXPECT_EQ(memory.package.partInfo(part->id()).size, 4u);
  EXPECT_EQ(memory.package.partInfo(part->id()).itemName, "b.XML");
}

TEST(PackageReading, VisitsPartsOnlyInOrderAndByPrefix) {
  MemoryPackage memory;
  memory.with("z.xml").with("Files/b.m").with("files/a.m").with("files/").with("files/c.unknown");
  memory.with("files/_rels/a.m.rels", relationshipsXml("")).with("filesx/d.m");
  memory.package.open(OpenMode::Read);
  const auto visited = [&](std::string_view prefix) {
    std::string names;
    memory.package.visitParts(prefix, [&](PartId part) {
      names += std::string(memory.package.partInfo(part).itemName) + " ";
    });
    return names;
  };

  EXPECT_EQ(visited("files/"), "Files/b.m files/a.m ");
  EXPECT_EQ(visited(""), "z.xml Files/b.m files/a.m filesx/d.m ");
  EXPECT_EQ(visited("none"), "");
}

TEST(PackageReading, PiecesAreOnePart) {
  MemoryPackage memory;
  memory.with("x/[1].PIECE", "b").with("x.m/[10].piece", "k");
  for (int i = 9; i >= 0; --i) {
    memory.with("x.m/[" + std::to_string(i) + "].Piece",
                std::string(1, static_cast<char>('a' + i)));
  }
  memory.with("X.m/[11].last.piece", "").with("single.m/[0].LAST.piece", "one");
  memory.package.open(OpenMode::Read);

  EXPECT_EQ(memory.textOf(u"/x.m"), "abcdefghijk");
  EXPECT_EQ(memory.textOf(u"/single.m"), "one");
  const auto part = memory.package.getPart(partName(u"/X.M"));
  EXPECT_EQ(part->getName().canonical(), "/x.m");
  EXPECT_EQ(memory.package.partInfo(part->id()).size, 11u);
  opc::ByteBuffer buffer;
  memory.package.readPart(part->id(), buffer, 11);
  EXPECT_EQ(buffer.size(), 11u);
  EXPECT_EQ(buffer.data()[10], 'k');
  EXPECT_EQ(faultOf([&] { memory.package.readPart(part->id(), buffer, 10); }).code,
            ErrorCode::TooLarge);
}

TEST(PackageReading, OnlyAWholePartHasAnItem) {
  MemoryPackage memory;
  memory.with("pieces.m/[0].piece", "x").with("pieces.m/[1].last.piece", "y").with("whole.m", "z");
  memory.package.open(OpenMode::Read);
  const auto itemOf = [&](const char16_t* name) {
    return memory.package.itemOf(memory.package.getPart(partName(name))->id());
  };

  EXPECT_EQ(itemOf(u"/pieces.m"), std::nullopt);
  ASSERT_TRUE(itemOf(u"/whole.m").has_value());
  EXPECT_EQ(memory.package.physical().itemName(*itemOf(u"/whole.m")), "whole.m");
}

TEST(PackageReading, IncompletePiecesAreNotAPart) {
  for (const std::vector<const char*>& items : std::vector<std::vector<const char*>>{
           {"a.m/[0].piece"},
           {"a.m/[1].last.piece"},
           {"a.m/[0].piece", "a.m/[2].last.piece"},
           {"a.m/[0].last.piece", "a.m/[1].piece"},
           {"a.m/[00].piece", "a.m/[1].last.piece"},
           {"a.m/[0].last.piece", "a.m/[99999999999999999999].piece"},
           {"a.m/[].last.piece"},
           {"a.m/[0]last.piece"},
           {"a.m/[0].last.pieces"}}) {
    MemoryPackage memory;
    for (const char* item : items) memory.with(item);

    memory.package.open(OpenMode::Read);

    EXPECT_FALSE(memory.package.hasPart(partName(u"/a.m"))) << items.front();
  }
}

TEST(PackageReading, RelationshipsOfAPartAreReadWhenTheyAreAskedFor) {
  MemoryPackage memory;
  memory.with("x/a.xml").with("X/_rels/A.xml.RELS", relationshipsXml(relationshipXml("r", "b.m")));
  memory.package.open(OpenMode::Read);
  const auto part = memory.package.getPart(partName(u"/x/a.xml"));

  EXPECT_EQ(part->getRelationship(u"r").getTargetURI(), opc::model::URI(u"/x/b.m"));
  EXPECT_EQ(part->getRelationships().size(), 1u);
  EXPECT_EQ(part->getRelationshipsByType(u"urn:t").size(), 1u);
  EXPECT_TRUE(part->getRelationshipsByType(u"urn:T").empty());
  EXPECT_TRUE(part->hasRelationship(u"r"));
  EXPECT_FALSE(part->hasRelationship(u"R"));
  EXPECT_EQ(faultOf([&] { part->getRelationship(u"q"); }).code, ErrorCode::NotFound);
}

TEST(PackageReading, BadRelationshipsOfAPartFailWhenTheyAreAskedForAndAgain) {
  MemoryPackage memory;
  memory.with("a.xml").with("b.unknown");
  memory.with("_rels/a.xml.rels", relationshipsXml(relationshipXml("r", "b.unknown")));
  memory.package.open(OpenMode::Read);
  const auto part = memory.package.getPart(partName(u"/a.xml"));

  for (int i = 0; i < 2; ++i) {
    const Fault fault = faultOf([&] { part->getRelationships(); });
    EXPECT_EQ(fault.rule, "CT-10");
    EXPECT_EQ(fault.text,
              "cannot read part '/_rels/a.xml.rels' of 'memory.kraddon': relationship 'r': its "
              "target '/b.unknown' has no content type");
  }
}

TEST(PackageReading, ErrorsOfReadingNameThePart) {
  MemoryPackage memory;
  memory.with("a.m", "12345");
  memory.package.open(OpenMode::Read);
  const auto part = memory.package.getPart(partName(u"/a.m"));
  opc::ByteBuffer buffer;

  const Fault fault = faultOf([&] { memory.package.readPart(part->id(), buffer, 4); });

  EXPECT_EQ(fault.code, ErrorCode::TooLarge);
  EXPECT_EQ(fault.text,
            "cannot read part '/a.m' of 'memory.kraddon': the item has 5 bytes, more than 4");
}

TEST(PackageReading, NothingMayBeChanged) {
  MemoryPackage memory;
  memory.with("a.m").with("_rels/.rels", relationshipsXml(relationshipXml("r", "a.m")));
  memory.package.open(OpenMode::Read);
  const auto part = memory.package.getPart(partName(u"/a.m"));

  const Fault faults[] = {
      faultOf([&] { memory.create(u"/b.m", u"text/plain", ""); }),
      faultOf([&] { memory.package.deletePart(partName(u"/a.m")); }),
      faultOf([&] { part->getOutputStream(); }),
      faultOf([&] { memory.package.deleteRelationship(u"r"); }),
      faultOf([&] { part->createInternalRelationship(u"t", opc::model::URI(u"/a"), u""); }),
      faultOf([&] { part->createExternalRelationship(u"t", opc::model::URI(u"/a"), u""); }),
  };

  for (const Fault& fault : faults) {
    EXPECT_EQ(fault.code, ErrorCode::InvalidState);
    EXPECT_EQ(fault.text, "cannot change package 'memory.kraddon': it was opened for reading");
  }
  memory.package.close(false);
  EXPECT_EQ(memory.disk.commits, 0u);
}

TEST(PackageReading, AHundredThousandPartsAreFoundByName) {
  MemoryPackage memory;
  for (int i = 0; i < 100000; ++i) {
    memory.with("files/" + std::to_string(i % 10) + "/Part" + std::to_string(i) + ".m", "");
  }
  memory.package.open(OpenMode::Read);

  std::size_t count = 0;
  memory.package.visitParts("files/3/", [&](PartId) { ++count; });
  EXPECT_EQ(count, 10000u);
  for (int i = 0; i < 100000; i += 7) {
    const std::string name =
        "/FILES/" + std::to_string(i % 10) + "/part" + std::to_string(i) + ".M";
    EXPECT_TRUE(memory.package.hasPart(partName(std::u16string(name.begin(), name.end())))) << name;
  }
  EXPECT_EQ(memory.physical.itemsRead().size(), 1u);
}

TEST(PackageReading, NamesOfManySegmentsTakeLinearTime) {
  MemoryPackage memory;
  std::string deep;
  for (int i = 0; i < 20000; ++i) deep += "a/";
  for (int i = 0; i < 50; ++i) memory.with(deep + std::to_string(i) + "/x.m", "");

  EXPECT_EQ(memory.faultOfOpening().rule, "none");
  memory.package.close(true);
  memory.with(deep.substr(0, 20001) + "", "");  // ".../a", of no type: no part
  EXPECT_EQ(memory.faultOfOpening().rule, "none");
}
