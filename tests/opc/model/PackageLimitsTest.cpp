// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "opc/interfaces/MemoryContentSource.h"
#include "opc/model/Package.h"
#include "opc/model/XercesHelper.h"
#include "tests/opc/model/PackageFixture.h"

using opc::ErrorCode;
using opc::interfaces::CompressionType;
using opc::interfaces::MemoryContentSource;
using opc::interfaces::OpenMode;
using opc::model::ContentType;
using opc::model::StandardPartInfo;
using opc::model::URI;
using opc::model::XercesHelper;
using test::Fault;
using test::faultOf;
using test::MemoryPackage;
using test::partName;
using test::relationshipsXml;
using test::relationshipXml;

namespace {

constexpr std::size_t kMaxLength = XercesHelper::kMaxAttributeLength;

std::u16string letters(std::size_t count) {
  return std::u16string(count, u'a');
}

void createTyped(MemoryPackage& memory, std::u16string_view name, const ContentType& type) {
  memory.package.createPart(partName(name), type, StandardPartInfo(CompressionType::Normal, 0),
                            std::make_unique<MemoryContentSource>("", "x"));
}

ContentType typeOfLength(std::size_t length) {
  const std::string start = "a/b;c=";
  return ContentType::fromAscii(start + std::string(length - start.size(), 'x'));
}

std::u16string numbered(std::u16string_view start, std::size_t number) {
  const std::string digits = std::to_string(number);
  return std::u16string(start) + std::u16string(digits.begin(), digits.end());
}

}  // namespace

TEST(PackageLimits, RelationshipsWithAValueThatIsNotReadBackAreRefused) {
  MemoryPackage memory;
  memory.package.open(OpenMode::Create);
  const std::u16string tooLong = letters(kMaxLength + 1);
  const std::u16string wide(kMaxLength / 2 + 1, u'\u00E9');

  const Fault faults[] = {
      faultOf([&] { memory.package.createExternalRelationship(u"urn:t", URI(tooLong), u""); }),
      faultOf([&] { memory.package.createExternalRelationship(u"urn:t", URI(wide), u""); }),
      faultOf([&] { memory.package.createExternalRelationship(tooLong, URI(u"x"), u""); }),
      faultOf([&] { memory.package.createExternalRelationship(u"urn:t", URI(u"x"), tooLong); }),
      faultOf([&] { memory.package.createInternalRelationship(u"urn:t", URI(u"/a"), tooLong); }),
      faultOf(
          [&] { memory.package.createInternalRelationship(u"urn:t", URI(u"/" + tooLong), u""); }),
      faultOf(
          [&] { memory.package.createInternalRelationship(u"urn:t", URI(u"/a#" + tooLong), u""); }),
      faultOf([&] {
        const std::u16string half = letters(kMaxLength / 2);
        memory.package.createInternalRelationship(u"urn:t", URI(u"/" + half + u"#" + half), u"");
      }),
  };

  for (const Fault& fault : faults) {
    EXPECT_EQ(fault.code, ErrorCode::TooLarge) << fault.text.substr(0, 200);
    EXPECT_LT(fault.text.size(), 300u);
  }
  EXPECT_EQ(faults[0].text,
            "relationship 'rId1' of the package: its target has 1048577 bytes, more than the "
            "1048576 that are read");
  EXPECT_TRUE(memory.package.getRelationships().empty());
  EXPECT_EQ(memory.package.createExternalRelationship(u"urn:t", URI(u"x"), u"").getId(), u"rId1");
}

TEST(PackageLimits, TheLongestValuesAreReadBack) {
  MemoryPackage memory;
  memory.package.open(OpenMode::Create);
  const std::u16string escaped(kMaxLength, u'&');
  memory.package.createExternalRelationship(u"urn:t", URI(escaped), letters(kMaxLength));
  memory.package.createExternalRelationship(letters(kMaxLength), URI(u"x"), u"");
  memory.package.createInternalRelationship(u"urn:t", URI(u"/a#" + letters(kMaxLength - 3)), u"");
  createTyped(memory, u"/a", typeOfLength(kMaxLength));

  memory.package.close(false);

  memory.package.open(OpenMode::Read);
  ASSERT_EQ(memory.package.getRelationships().size(), 3u);
  EXPECT_EQ(memory.package.getRelationships()[0].getTargetURI().toString(), escaped);
  EXPECT_EQ(memory.package.getPart(partName(u"/a"))->getContentType().ascii().size(), kMaxLength);
}

TEST(PackageLimits, AContentTypeThatIsNotReadBackIsRefused) {
  MemoryPackage memory;
  memory.with("old.m");
  memory.package.open(OpenMode::Modify);

  const Fault fault = faultOf([&] { createTyped(memory, u"/a.m", typeOfLength(kMaxLength + 1)); });

  EXPECT_EQ(fault.code, ErrorCode::TooLarge);
  EXPECT_EQ(fault.text,
            "content type 'a/b;c=" + std::string(58, 'x') +
                "...' of '/a.m': it has 1048577 bytes, more than the 1048576 that are read");
  EXPECT_FALSE(memory.package.hasPart(partName(u"/a.m")));
  EXPECT_TRUE(memory.package.canCreatePart(partName(u"/a.m")));
}

TEST(PackageLimits, AContentTypeOfANameThatIsNotReadBackIsRefused) {
  MemoryPackage memory;
  memory.package.open(OpenMode::Create);
  const std::u16string longest = u"/" + letters(kMaxLength - 1);

  createTyped(memory, longest, ContentType(u"a/b"));
  const Fault fault = faultOf([&] { createTyped(memory, longest + u"b", ContentType(u"a/b")); });

  EXPECT_EQ(fault.code, ErrorCode::TooLarge);
  EXPECT_TRUE(
      fault.text.ends_with("the name has 1048577 bytes, more than the 1048576 that are read"))
      << fault.text.substr(0, 200);
}

TEST(PackageLimits, ARefusedPartLeavesWhatLiesInItsPlace) {
  MemoryPackage memory;
  memory.with("a.unknown").with("_rels/b.m.rels", relationshipsXml(""));
  memory.package.open(OpenMode::Modify);

  faultOf([&] { createTyped(memory, u"/a.unknown", typeOfLength(kMaxLength + 1)); });
  faultOf([&] { createTyped(memory, u"/b.m", typeOfLength(kMaxLength + 1)); });

  memory.package.close(false);
  EXPECT_TRUE(memory.disk.has("a.unknown"));
  EXPECT_TRUE(memory.disk.has("_rels/b.m.rels"));
}

TEST(PackageLimits, RelationshipsAreAddedUntilTheirDocumentIsFullAndAreReadBack) {
  MemoryPackage memory;
  memory.package.open(OpenMode::Create);
  const std::u16string target = letters(kMaxLength);
  std::size_t count = 0;
  Fault fault;
  while (count < 100 && fault.code != ErrorCode::TooLarge) {
    fault = faultOf([&] { memory.package.createExternalRelationship(u"u", URI(target), u""); });
    if (fault.code != ErrorCode::TooLarge) ++count;
  }

  EXPECT_EQ(count, 63u);
  EXPECT_EQ(fault.text,
            "relationship 'rId64' of the package: there is no room for it in the 67108864 bytes "
            "and 2097152 elements and attributes that are read of one document");
  memory.package.close(false);
  memory.package.open(OpenMode::Modify);
  EXPECT_EQ(memory.package.getRelationships().size(), 63u);
  const auto addAgain = [&] { memory.package.createExternalRelationship(u"u", URI(target), u""); };
  EXPECT_EQ(faultOf(addAgain).code, ErrorCode::TooLarge);
  memory.package.deleteRelationship(u"rId7");
  EXPECT_EQ(faultOf(addAgain).rule, "none");
  EXPECT_EQ(faultOf(addAgain).code, ErrorCode::TooLarge);
}

TEST(PackageLimits, RelationshipsBeyondTheNodesThatAreReadAreRefused) {
  MemoryPackage memory;
  memory.package.open(OpenMode::Create);
  // The root takes two nodes, each of these five.
  const std::size_t room = (XercesHelper::kMaxNodes - 2) / 5;
  for (std::size_t i = 0; i < room; ++i) {
    memory.package.createExternalRelationship(u"u", URI(u"x"), u"");
  }

  const Fault fault =
      faultOf([&] { memory.package.createExternalRelationship(u"u", URI(u"x"), u""); });

  EXPECT_EQ(fault.code, ErrorCode::TooLarge);
}

TEST(PackageLimits, ContentTypesAreAddedUntilTheirDocumentIsFullAndAreReadBack) {
  MemoryPackage memory;
  memory.package.open(OpenMode::Create);
  const ContentType type = typeOfLength(kMaxLength);
  std::size_t count = 0;
  Fault fault;
  while (count < 100 && fault.code != ErrorCode::TooLarge) {
    fault = faultOf([&] { createTyped(memory, numbered(u"/p", count), type); });
    if (fault.code != ErrorCode::TooLarge) ++count;
  }

  EXPECT_EQ(count, 63u);
  EXPECT_EQ(fault.text,
            "content type of '/p63': there is no room for it in the 67108864 bytes and 2097152 "
            "elements and attributes that are read of one document");
  memory.package.close(false);
  memory.package.open(OpenMode::Modify);
  EXPECT_TRUE(memory.package.hasPart(partName(u"/p62")));
  EXPECT_FALSE(memory.package.hasPart(partName(u"/p63")));
  EXPECT_EQ(faultOf([&] { createTyped(memory, u"/q", type); }).code, ErrorCode::TooLarge);
  memory.package.deletePart(partName(u"/p7"));
  EXPECT_EQ(faultOf([&] { createTyped(memory, u"/q", type); }).rule, "none");
}

TEST(PackageLimits, WhatCouldBeReadAsReferencesCanBeWrittenToo) {
  // Eight bytes of what is read, three of what is written, and three are what counts.
  std::string references;
  for (std::size_t i = 0; i < kMaxLength / 3; ++i) references += "&#x4E00;";
  MemoryPackage memory;
  memory.with("a.m").with(
      "_rels/.rels", relationshipsXml(relationshipXml("r", references, "TargetMode=\"External\"")));
  memory.package.open(OpenMode::Modify);
  memory.package.createInternalRelationship(u"urn:t", URI(u"/a.m"), u"");

  memory.package.close(false);

  memory.package.open(OpenMode::Read);
  EXPECT_EQ(memory.package.getRelationship(u"r").getTargetURI().toString().size(), kMaxLength / 3);
}

TEST(PackageLimits, ADocumentThatGrowsTooLargeOnlyInWritingFailsTheCommit) {
  // Each of these takes one byte of what is read, and four of what is written.
  const std::string signs(kMaxLength / 2, '>');
  std::string relationships;
  for (int i = 0; i < 60; ++i) {
    relationships += "<Relationship Id='r" + std::to_string(i) + "' Type='" + signs +
                     "' TargetMode='External' Target='x'/>";
  }
  MemoryPackage memory;
  memory.with("a.m").with("_rels/.rels", relationshipsXml(relationships));
  memory.package.open(OpenMode::Modify);
  memory.package.deleteRelationship(u"r0");

  const Fault fault = faultOf([&] { memory.package.close(false); });

  EXPECT_EQ(fault.code, ErrorCode::TooLarge);
  EXPECT_TRUE(fault.text.starts_with("cannot write '/_rels/.rels' of 'memory.kraddon': it has "))
      << fault.text.substr(0, 200);
  EXPECT_EQ(memory.disk.commits, 0u);
}

TEST(PackageLimits, ATypeOfBlanksWhichWouldNotBeReadBackIsRefused) {
  MemoryPackage memory;
  memory.package.open(OpenMode::Create);

  const Fault fault =
      faultOf([&] { memory.package.createExternalRelationship(u" \t", URI(u"x"), u""); });

  EXPECT_EQ(fault.rule, "RL-5");
}
