// SPDX-License-Identifier: MIT
#include "opc/zippackage/ZipDirectory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/opc/zippackage/DirectoryFixture.h"
#include "tests/opc/zippackage/PackageFixture.h"
#include "tests/support/ZipBuilder.h"

namespace opc::zippackage {
namespace {

using test::directoryOf;
using test::extraField;
using test::faultsOf;
using test::le16;
using test::le32;
using test::le64;
using test::refusalOf;
using test::twoItems;
using test::ZipBuilder;

using Kinds = std::vector<ZipFaultKind>;

TEST(ZipDirectory, ListsNamesSizesAndOffsets) {
  const ZipDirectory directory = directoryOf(twoItems());

  ASSERT_EQ(directory.entries().size(), 2u);
  EXPECT_EQ(directory.name(0), "a.txt");
  EXPECT_EQ(directory.entries()[0].headerOffset, 0u);
  EXPECT_EQ(directory.entries()[0].size, 5u);
  EXPECT_EQ(directory.entries()[0].crc, test::crcOf("first"));
  EXPECT_EQ(directory.name(1), "b/c.txt");
  EXPECT_EQ(directory.entries()[1].headerOffset, 40u);
  EXPECT_EQ(directory.entries()[1].size, 22u);
  EXPECT_LT(directory.entries()[1].packedSize, 22u);
  EXPECT_TRUE(directory.faults().empty());
}

TEST(ZipDirectory, OfAnEmptyArchiveHasNoEntries) {
  const ZipDirectory directory = directoryOf(ZipBuilder{});

  EXPECT_TRUE(directory.entries().empty());
  EXPECT_TRUE(directory.faults().empty());
}

TEST(ZipDirectory, ListsEntriesByTheirPlaceInTheFileToo) {
  ZipBuilder builder;
  builder.add({.name = "a", .content = "1"}).add({.name = "b", .content = "2"});
  builder.items[0].central.offset = 32;
  builder.items[1].central.offset = 0;
  builder.items[0].local.name = "b";
  builder.items[1].local.name = "a";

  const ZipDirectory directory = directoryOf(builder);

  EXPECT_EQ(directory.physicalOrder()[0], 1u);
  EXPECT_EQ(directory.physicalOrder()[1], 0u);
  EXPECT_TRUE(directory.faults().empty());
}

TEST(ZipDirectory, ADigitalSignatureOfTheDirectoryIsNotAnEntry) {
  ZipBuilder builder = twoItems();
  builder.beforeEnd = le32(0x05054b50) + le16(4) + "sign";
  const std::size_t plain = twoItems().build().size();
  builder.directorySize = builder.build().size() - 22 - directoryOf(twoItems()).location().offset;
  ASSERT_GT(builder.build().size(), plain);

  EXPECT_EQ(refusalOf(builder), "");
  EXPECT_EQ(directoryOf(builder).entries().size(), 2u);
}

TEST(ZipDirectory, ADirectoryThatEndsWithinAnEntryIsRefused) {
  ZipBuilder builder = twoItems();
  builder.directorySize = directoryOf(twoItems()).location().size - 1;

  EXPECT_EQ(refusalOf(builder), "ZP-16: entry 2 of its directory is cut off or no entry");
}

TEST(ZipDirectory, ACountThatIsNotThatOfTheEntriesIsRefused) {
  for (const std::uint64_t count : {0ull, 1ull, 3ull, 65534ull}) {
    ZipBuilder builder = twoItems();
    builder.entries = count;

    EXPECT_EQ(refusalOf(builder), "ZP-16: its directory has 2 entries, its end record declares " +
                                      std::to_string(count));
  }
}

TEST(ZipDirectory, AnEnormousDeclaredCountCostsNoMemory) {
  ZipBuilder builder = twoItems();
  builder.zip64 = true;
  builder.entries = std::uint64_t{1} << 60;

  EXPECT_EQ(refusalOf(builder).substr(0, 35), "ZP-16: its directory has 2 entries,");
}

TEST(ZipDirectory, OneVolumeOfSeveralIsRefused) {
  ZipBuilder disk = twoItems();
  disk.disk = 1;
  ZipBuilder directoryDisk = twoItems();
  directoryDisk.directoryDisk = 1;
  ZipBuilder here = twoItems();
  here.entriesHere = 1;
  ZipBuilder item = twoItems();
  item.items[1].central.disk = 1;
  ZipBuilder elsewhere = twoItems();
  elsewhere.disk = 0xFFFF;
  ZipBuilder locator = twoItems();
  locator.zip64 = true;
  locator.disks = 2;
  ZipBuilder wide = twoItems();
  wide.zip64 = true;
  wide.disk = 1;

  for (const ZipBuilder* builder :
       {&disk, &directoryDisk, &here, &item, &elsewhere, &locator, &wide}) {
    EXPECT_EQ(refusalOf(*builder).substr(0, 5), "ZP-14");
  }
}

TEST(ZipDirectory, EncryptedItemsAreRefused) {
  for (const int bit : {0, 6, 13}) {
    ZipBuilder builder = twoItems();
    builder.items[1].central.flags = static_cast<std::uint16_t>(1 << bit);

    EXPECT_EQ(refusalOf(builder), "ZP-6: item 'b/c.txt' is encrypted") << bit;
  }
  ZipBuilder aes = twoItems();
  aes.items[0].central.method = 99;
  EXPECT_EQ(refusalOf(aes), "ZP-6: item 'a.txt' is encrypted");
}

TEST(ZipDirectory, MethodsOtherThanStoredAndDeflatedAreRefused) {
  for (const unsigned method : {1u, 6u, 9u, 12u, 14u, 93u, 95u, 98u}) {
    ZipBuilder builder = twoItems();
    builder.items[0].central.method = static_cast<std::uint16_t>(method);

    EXPECT_EQ(refusalOf(builder), "ZP-5: item 'a.txt' is packed with method " +
                                      std::to_string(method) + ", only 0 and 8 are known");
  }
}

TEST(ZipDirectory, AStoredItemOfTwoSizesIsRefused) {
  ZipBuilder builder = twoItems();
  builder.items[0].central.size = 6;

  EXPECT_EQ(refusalOf(builder), "ZP-7: item 'a.txt' is stored, but its sizes differ (6 and 5)");
}

TEST(ZipDirectory, TwoItemsOfOneNameAreRefused) {
  ZipBuilder builder = twoItems();
  builder.add({.name = "a.txt", .content = "other"});

  EXPECT_EQ(refusalOf(builder), "ZP-2: item 'a.txt' is there twice");
}

TEST(ZipDirectory, NamesThatDifferInCaseOnlyAreTwo) {
  ZipBuilder builder = twoItems();
  builder.add({.name = "A.txt", .content = "other"});

  EXPECT_TRUE(faultsOf(builder).empty());
}

TEST(ZipDirectory, ANameInTwoEncodingsIsStillTwice) {
  ZipBuilder builder;
  builder.add({.name = "\x81.txt", .content = "1"});
  builder.add({.name = "ü.txt", .content = "2"});
  builder.items[1].central.flags = 1 << 11;

  EXPECT_EQ(refusalOf(builder), "ZP-2: item 'ü.txt' is there twice");
}

TEST(ZipDirectory, AFolderThatIsThereTwiceIsAWarning) {
  ZipBuilder builder = twoItems();
  builder.add({.name = "b/"}).add({.name = "b/"});

  EXPECT_EQ(faultsOf(builder), Kinds{ZipFaultKind::DuplicateFolder});
  EXPECT_EQ(refusalOf(builder), "");
}

TEST(ZipDirectory, ANulInANameIsRefused) {
  ZipBuilder builder;
  builder.add({.name = std::string("a\0b", 3), .content = "1"});

  EXPECT_EQ(refusalOf(builder), "RB-13: the name of item 'a\\x00b' holds a NUL");
}

// Names are looked at in pieces: what is wrong must show wherever it stands.
TEST(ZipDirectory, WhatIsWrongWithANameIsFoundAtEachPlace) {
  const std::string plain = "segment/name.of-an_item.m";
  for (std::size_t at = 0; at <= plain.size(); ++at) {
    const auto faultsWith = [&](const std::string& inserted) {
      ZipBuilder builder;
      builder.add({.name = std::string(plain).insert(at, inserted)});
      builder.items[0].central.flags = 1 << 11;
      return faultsOf(builder);
    };

    EXPECT_EQ(faultsWith(std::string(1, '\0')), Kinds{ZipFaultKind::NameHasNul}) << at;
    EXPECT_EQ(faultsWith("\xff"), Kinds{ZipFaultKind::NameNotUtf8}) << at;
    EXPECT_EQ(faultsWith("/../"), Kinds{ZipFaultKind::ParentSegment}) << at;
    EXPECT_EQ(faultsWith("./x"), Kinds{}) << at;
  }
}

TEST(ZipDirectory, ANameThatIsMarkedAsUtf8AndIsNotIsRefused) {
  for (const char* name : {"a\xff", "\xc0\xaf", "\xed\xa0\x80", "\xf5\x80\x80\x80", "abc\xc3"}) {
    ZipBuilder builder;
    builder.add({.name = name, .content = "1"});
    EXPECT_EQ(refusalOf(builder), "");

    builder.items[0].central.flags = 1 << 11;

    EXPECT_EQ(refusalOf(builder).substr(0, 5), "RB-13") << name;
  }
}

TEST(ZipDirectory, NamesComeAsUtf8WhateverTheyAreStoredAs) {
  ZipBuilder builder;
  builder.add({.name = "gr\x81n", .content = "1"});
  builder.add({.name = "grün", .content = "2"});
  builder.add({.name = "\x9b\x9d", .content = "3"});
  builder.items[1].central.flags = 1 << 11;
  builder.items[1].central.name = "grün2";
  builder.items[1].local.name = "grün2";

  const ZipDirectory directory = directoryOf(builder);

  EXPECT_EQ(directory.name(0), "grün");
  EXPECT_EQ(directory.storedName(0), "gr\x81n");
  EXPECT_EQ(directory.name(1), "grün2");
  EXPECT_EQ(directory.name(2), "¢¥");
  EXPECT_TRUE(directory.faults().empty());
}

TEST(ZipDirectory, AnEmptyNameIsAWarning) {
  ZipBuilder builder;
  builder.add({.name = "", .content = "1"});

  EXPECT_EQ(faultsOf(builder), Kinds{ZipFaultKind::NameEmpty});
  EXPECT_EQ(refusalOf(builder), "");
}

TEST(ZipDirectory, AParentSegmentIsRefused) {
  for (const char* name : {"..", "../a", "a/../b", "a/..", "a\\..\\b", "..\\a"}) {
    ZipBuilder builder;
    builder.add({.name = name, .content = "1"});

    const ZipDirectory directory = directoryOf(builder);

    ASSERT_EQ(directory.faults().size(), 1u) << name;
    EXPECT_EQ(directory.faults()[0].kind, ZipFaultKind::ParentSegment);
    EXPECT_EQ(directory.faults()[0].severity(), ZipFaultSeverity::Refused);
    EXPECT_NE(refusalOf(builder), "");
  }
  for (const char* name : {"a..", "..a", "a/...", "a../b", "a/b..c", "..."}) {
    ZipBuilder builder;
    builder.add({.name = name, .content = "1"});

    EXPECT_TRUE(faultsOf(builder).empty()) << name;
  }
}

TEST(ZipDirectory, ItemsThatShareBytesAreRefused) {
  ZipBuilder sameHeader = twoItems();
  sameHeader.items[1].central.offset = 0;
  ZipBuilder inside = twoItems();
  inside.items[0].content = std::string(200, 'x');
  inside.items[1].central.offset = 60;
  ZipBuilder intoNext = twoItems();
  intoNext.items[0].central.size = 6;
  intoNext.items[0].central.packedSize = 6;
  ZipBuilder intoDirectory = twoItems();
  intoDirectory.items[1].central.packedSize = 60;

  EXPECT_EQ(refusalOf(sameHeader), "RB-2: item 'b/c.txt' overlaps item 'a.txt'");
  EXPECT_EQ(refusalOf(inside), "RB-2: item 'b/c.txt' overlaps item 'a.txt'");
  EXPECT_EQ(refusalOf(intoNext), "RB-2: item 'b/c.txt' overlaps item 'a.txt'");
  EXPECT_EQ(refusalOf(intoDirectory), "RB-2: item 'b/c.txt' overlaps the directory");
}

TEST(ZipDirectory, AnItemInsideOneThatIsNotItsNeighbourIsFound) {
  ZipBuilder builder;
  builder.add({.name = "big", .content = std::string(500, 'x')});
  builder.add({.name = "small1", .content = "1"}).add({.name = "small2", .content = "2"});
  builder.items[1].central.offset = 100;
  builder.items[2].central.offset = 300;

  std::vector<ZipFaultKind> faults = faultsOf(builder);

  EXPECT_EQ(std::count(faults.begin(), faults.end(), ZipFaultKind::Overlap), 2);
}

TEST(ZipDirectory, AnItemBeyondTheFileIsRefused) {
  ZipBuilder offset = twoItems();
  offset.items[1].central.offset = 0x7FFFFFFF;
  ZipBuilder size = twoItems();
  size.items[1].central.packedSize = 0x7FFFFFFF;
  ZipBuilder overflow = twoItems();
  overflow.items[1].central.packedSize = 0xFFFFFFFF;
  overflow.items[1].central.offset = 0xFFFFFFFF;
  overflow.items[1].central.extra = extraField(1, le64(UINT64_MAX - 5) + le64(UINT64_MAX - 5));

  EXPECT_EQ(refusalOf(offset).substr(0, 31), "ZP-16: item 'b/c.txt' reaches t");
  EXPECT_EQ(refusalOf(size).substr(0, 31), "ZP-16: item 'b/c.txt' reaches t");
  EXPECT_EQ(refusalOf(overflow).substr(0, 31), "ZP-16: item 'b/c.txt' reaches t");
}

TEST(ZipDirectory, LargeUnusedGapsAreAWarning) {
  ZipBuilder builder = twoItems();
  builder.items[1].before = std::string(70000, '\0');

  const ZipDirectory directory = directoryOf(builder);

  ASSERT_EQ(directory.faults().size(), 1u);
  EXPECT_EQ(directory.faults()[0].kind, ZipFaultKind::UnusedBytes);
  EXPECT_EQ(directory.describe(directory.faults()[0]),
            "70000 bytes at offset 40 belong to no item");
}

TEST(ZipDirectory, MalformedExtraFieldsAreAWarning) {
  ZipBuilder builder = twoItems();
  builder.items[0].central.extra = "\x01\x02\xff\xff!";

  EXPECT_EQ(faultsOf(builder), Kinds{ZipFaultKind::ExtraMalformed});
  EXPECT_EQ(refusalOf(builder), "");
}

TEST(ZipDirectory, TwoZip64FieldsAreAWarningWhetherTheyAreNeededOrNot) {
  for (const bool isNeeded : {false, true}) {
    ZipBuilder builder = twoItems();
    builder.zip64 = true;
    if (isNeeded) builder.items[0].central.size = 0xFFFFFFFF;
    builder.items[0].central.extra = extraField(1, le64(5)) + extraField(1, le64(6));

    const ZipDirectory directory = directoryOf(builder);

    ASSERT_EQ(directory.faults().size(), 1u);
    EXPECT_EQ(directory.faults()[0].kind, ZipFaultKind::ExtraMalformed);
    EXPECT_EQ(directory.describe(directory.faults()[0]), "item 'a.txt' has two ZIP64 fields");
    EXPECT_EQ(directory.entries()[0].size, 5u);
    EXPECT_EQ(refusalOf(builder), "");
  }
}

TEST(ZipDirectory, UnknownExtraFieldsCommentsAndHostsAreFine) {
  ZipBuilder builder = twoItems();
  builder.items[0].central.extra = extraField(0xA220, std::string(1000, 'x'));
  builder.items[0].comment = "PK\x05\x06 in an item's comment";
  builder.items[0].central.madeBy = 0xFF14;
  builder.items[0].central.dosTime = 0;

  EXPECT_TRUE(faultsOf(builder).empty());
}

TEST(ZipDirectory, Zip64ValuesOfAnItemMayBeAllOrOne) {
  ZipBuilder all = twoItems();
  all.items[0].central.size = 0xFFFFFFFF;
  all.items[0].central.packedSize = 0xFFFFFFFF;
  all.items[0].central.offset = 0xFFFFFFFF;
  all.items[0].central.disk = 0xFFFF;
  all.items[0].central.extra = extraField(1, le64(5) + le64(5) + le64(0) + le32(0));
  ZipBuilder one = twoItems();
  one.items[1].central.offset = 0xFFFFFFFF;
  one.items[1].central.extra = extraField(0x5455, "abcde") + extraField(1, le64(40));
  all.zip64 = one.zip64 = true;

  for (const ZipBuilder* builder : {&all, &one}) {
    const ZipDirectory directory = directoryOf(*builder);

    EXPECT_TRUE(directory.faults().empty());
    EXPECT_EQ(directory.entries()[0].size, 5u);
    EXPECT_EQ(directory.entries()[0].packedSize, 5u);
    EXPECT_EQ(directory.entries()[0].headerOffset, 0u);
    EXPECT_EQ(directory.entries()[1].headerOffset, 40u);
  }
}

TEST(ZipDirectory, AnItemWithoutTheZip64ValueThatItRefersToIsRefused) {
  ZipBuilder none = twoItems();
  none.items[0].central.size = 0xFFFFFFFF;
  ZipBuilder tooFew = none;
  tooFew.items[0].central.packedSize = 0xFFFFFFFF;
  tooFew.items[0].central.extra = extraField(1, le64(5));

  EXPECT_EQ(refusalOf(none), "ZP-9: item 'a.txt' refers to a ZIP64 value that it does not have");
  EXPECT_EQ(refusalOf(tooFew).substr(0, 4), "ZP-9");
}

ZipBuilder manyItems(std::size_t count) {
  ZipBuilder builder;
  for (std::size_t i = 0; i < count; ++i) builder.add({.name = "n" + std::to_string(i)});
  return builder;
}

TEST(ZipDirectory, SixtyFiveThousandFiveHundredThirtyFiveItemsNeedNoZip64) {
  EXPECT_EQ(refusalOf(manyItems(65535)), "");
}

TEST(ZipDirectory, ManyItemsWithAndWithoutOneNameTwice) {
  ZipBuilder builder = manyItems(70000);
  builder.zip64 = true;
  EXPECT_EQ(refusalOf(builder), "");

  builder.items[69999].name = "n123";

  EXPECT_EQ(refusalOf(builder), "ZP-2: item 'n123' is there twice");
}

TEST(ZipDirectory, MoreItemsThanTheEndRecordCanCountAreRefusedWithoutZip64) {
  ZipBuilder builder = manyItems(65537);

  EXPECT_EQ(refusalOf(builder),
            "ZP-16: its directory has 65537 entries, its end record declares 1");
}

}  // namespace
}  // namespace opc::zippackage
