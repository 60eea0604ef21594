// SPDX-License-Identifier: MIT
#include "opc/zippackage/EndOfDirectory.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include "tests/opc/zippackage/DirectoryFixture.h"
#include "tests/opc/zippackage/PackageFixture.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/ZipBuilder.h"

namespace opc::zippackage {
namespace {

using test::directoryOf;
using test::faultsOf;
using test::le16;
using test::le32;
using test::le64;
using test::refusalOf;
using test::twoItems;
using test::ZipBuilder;

using Kinds = std::vector<ZipFaultKind>;

TEST(EndOfDirectory, AFileThatIsNotAZipFileIsRefusedWithTheReason) {
  EXPECT_EQ(refusalOf(std::string()), "ZP-16: it is empty");
  EXPECT_EQ(refusalOf(std::string("hello")), "ZP-16: not a ZIP file (no end record)");
  EXPECT_EQ(refusalOf(std::string(300000, 'x')), "ZP-16: not a ZIP file (no end record)");
  EXPECT_EQ(refusalOf(twoItems().build().substr(0, 60)), "ZP-16: it is truncated (no end record)");
}

TEST(EndOfDirectory, AnArchiveCutWithinItsEndRecordIsRefused) {
  const std::string bytes = twoItems().build();

  EXPECT_EQ(refusalOf(bytes.substr(0, bytes.size() - 1)),
            "ZP-16: it is truncated within its end record");
}

TEST(EndOfDirectory, AnArchiveCutWithinItsCommentIsRefused) {
  ZipBuilder builder = twoItems();
  builder.comment = "a comment";
  const std::string bytes = builder.build();

  EXPECT_EQ(refusalOf(bytes), "");
  EXPECT_EQ(refusalOf(bytes.substr(0, bytes.size() - 1)),
            "ZP-16: it is truncated within its comment");
}

TEST(EndOfDirectory, KeepsTheArchiveComment) {
  ZipBuilder builder = twoItems();
  builder.comment = "a comment";

  const ZipDirectory directory = directoryOf(builder);

  const auto& comment = directory.location().comment;
  EXPECT_EQ(std::string(comment.begin(), comment.end()), "a comment");
  EXPECT_TRUE(directory.faults().empty());
}

TEST(EndOfDirectory, BytesAfterTheEndAreAWarning) {
  for (const std::size_t count : {1u, 2u, 70000u, 131072u, 16000000u}) {
    ZipBuilder builder = twoItems();
    builder.suffix = std::string(count, '\n');

    const ZipDirectory directory = directoryOf(builder);

    ASSERT_EQ(directory.faults().size(), 1u);
    EXPECT_EQ(directory.faults()[0].kind, ZipFaultKind::BytesAfterEnd);
    EXPECT_EQ(directory.faults()[0].second, count);
    EXPECT_EQ(directory.faults()[0].severity(), ZipFaultSeverity::Warning);
    EXPECT_EQ(directory.entries().size(), 2u);
  }
}

TEST(EndOfDirectory, TheEndIsFoundAcrossTheSeamOfWhatIsReadFirstAndUpToTheBound) {
  for (const std::size_t size : {FileTail::kSize, FileTail::kLongSize}) {
    for (const std::size_t missing : {0u, 18u, 21u, 22u}) {
      ZipBuilder builder = twoItems();
      builder.suffix = std::string(size - missing, '\n');

      const bool isFound = refusalOf(builder).empty();

      EXPECT_EQ(isFound, size == FileTail::kSize || missing == 22) << size << " " << missing;
    }
  }
}

TEST(EndOfDirectory, FarMoreBytesAfterTheEndAreNotTakenForACut) {
  ZipBuilder builder = twoItems();
  builder.suffix = std::string(FileTail::kLongSize, '\0');

  EXPECT_EQ(refusalOf(builder),
            "ZP-16: it is truncated, or more than 16 MiB follow its end (no end record)");
}

TEST(EndOfDirectory, APackageInAPackageThatIsCutIsNotTakenForIt) {
  ZipBuilder builder;
  builder.add({.name = "inner.zip", .content = twoItems().build() + std::string(200000, 'x')});
  const std::string bytes = builder.build();

  EXPECT_EQ(refusalOf(bytes.substr(0, bytes.size() - 100)),
            "ZP-16: it is truncated (no end record)");
}

TEST(EndOfDirectory, CountlessSignaturesFarInFrontOfTheEndAreNotAllLookedAt) {
  ZipBuilder builder = twoItems();
  for (int i = 0; i < 32769; ++i) builder.suffix += le32(0x06054b50);
  builder.suffix += std::string(FileTail::kSize, '\0');

  EXPECT_EQ(refusalOf(builder), "ZP-16: more than 32768 places in it look like its end record");
}

TEST(EndOfDirectory, ASignatureInTheCommentIsNotAnEndRecord) {
  const std::string signature = le32(0x06054b50);
  for (const std::string& fake :
       {signature, "x" + signature, signature + "\n", signature + std::string(18, 'x')}) {
    ZipBuilder builder = twoItems();
    builder.comment = fake;

    EXPECT_EQ(refusalOf(builder), "");
    EXPECT_EQ(directoryOf(builder).entries().size(), 2u);
  }
}

TEST(EndOfDirectory, AnEndRecordInTheCommentThatLeadsNowhereIsRefused) {
  for (const std::uint32_t directorySize : {10u, 5000u}) {
    const std::string nowhere =
        le32(0x06054b50) + le64(0) + le32(directorySize) + le32(4) + le16(0);
    ZipBuilder ofArchive = twoItems();
    ofArchive.comment = nowhere;
    ZipBuilder ofItem = twoItems();
    ofItem.items[0].comment = "before " + nowhere + " behind";

    EXPECT_EQ(refusalOf(ofArchive),
              "ZP-16: its comment holds what readers may take for the end record");
    EXPECT_EQ(refusalOf(ofItem),
              "ZP-16: the comment of item 'a.txt' holds what readers may take for the end record");
  }
}

TEST(EndOfDirectory, AnEndRecordThatHoldsItsOwnSignatureIsFound) {
  ZipBuilder builder = twoItems();
  builder.disk = 0x4b50;
  builder.directoryDisk = 0x0605;

  EXPECT_EQ(refusalOf(builder), "ZP-14: it is one volume of an archive of several");
}

TEST(FileTail, HandsOutWhatItHoldsEvenIfTheFileIsCutMeanwhile) {
  const test::TemporaryFolder folder;
  const std::string path = (folder / "file").string();
  const std::string bytes = test::randomText(1000);
  test::writeFile(path, bytes);
  const PackageFile file(path);
  const FileTail tail(file);
  std::filesystem::resize_file(path, 0);
  std::string read(bytes.size(), '\0');

  tail.readAt(0, reinterpret_cast<unsigned char*>(read.data()), read.size());

  EXPECT_EQ(read, bytes);
}

/// Where readers that take the last end record would find something else than the first one names.
struct SecondArchive {
  const char* description;
  std::string bytes;
};

void PrintTo(const SecondArchive& archive, std::ostream* stream) {
  *stream << archive.description;
}

std::string withComment(const std::string& comment) {
  ZipBuilder builder = twoItems();
  builder.comment = comment;
  return builder.build();
}

ZipBuilder otherArchive() {
  ZipBuilder builder;
  builder.add({.name = "other", .content = "content"});
  return builder;
}

std::vector<SecondArchive> secondArchives() {
  const std::string empty = le32(0x06054b50) + std::string(18, '\0');
  ZipBuilder wide = otherArchive();
  wide.zip64 = true;
  ZipBuilder cut = otherArchive();
  cut.commentLength = 100;
  ZipBuilder counted = otherArchive();
  counted.prefix = twoItems().build();
  const std::string exact = counted.build().substr(counted.prefix.size());
  return {{"two archives end to end", twoItems().build() + otherArchive().build()},
          {"a second one with ZIP64 records", twoItems().build() + wide.build()},
          {"a whole archive as the comment", withComment(otherArchive().build())},
          {"the same and more", withComment(otherArchive().build() + "\n")},
          {"one that counts what is before it, and more", withComment(exact + "\n")},
          {"one whose comment is cut off", withComment(cut.build())},
          {"an empty one", withComment(empty)},
          {"an empty one and more", withComment(empty + "\n")},
          {"two empty ones", withComment("x" + empty + empty)}};
}

class SecondArchiveRefusal : public testing::TestWithParam<SecondArchive> {};

TEST_P(SecondArchiveRefusal, IsSinceReadersWouldDiffer) {
  EXPECT_EQ(refusalOf(GetParam().bytes).substr(0, 31), "ZP-16: it has two end records, ");
}

INSTANTIATE_TEST_SUITE_P(EndOfDirectory, SecondArchiveRefusal, testing::ValuesIn(secondArchives()));

TEST(EndOfDirectory, ASecondDirectoryInFrontOfTheEndRecordIsRefused) {
  ZipBuilder builder = twoItems();
  const DirectoryLocation location = directoryOf(builder).location();
  const std::string directory = builder.build().substr(location.offset, location.size);
  builder.beforeEnd = directory;

  EXPECT_EQ(refusalOf(builder), "ZP-16: it has two directories");
}

TEST(EndOfDirectory, Zip64RecordsAtTheEndOfAnItemsCommentAreRefusedSinceReadersWouldDiffer) {
  ZipBuilder builder = twoItems();
  const std::string record =
      le32(0x06064b50) + le64(44) + le16(45) + le16(45) + std::string(40, '\0');
  builder.items[1].comment = record + le32(0x07064b50) + le32(0) + le64(12345) + le32(1);

  EXPECT_EQ(refusalOf(builder).substr(0, 31), "ZP-16: it has two end records, ");
}

TEST(EndOfDirectory, ACommentFullOfSignaturesIsReadInNoTime) {
  ZipBuilder builder = twoItems();
  while (builder.comment.size() < 65000) builder.comment += le32(0x06054b50);

  EXPECT_EQ(directoryOf(builder).entries().size(), 2u);
}

TEST(EndOfDirectory, AWholeArchiveInTheCommentIsRefusedSinceReadersWouldDiffer) {
  ZipBuilder hidden;
  hidden.prefix = twoItems().build();
  hidden.add({.name = "other", .content = "content"});
  ZipBuilder builder = twoItems();
  builder.comment = hidden.build().substr(hidden.prefix.size());
  ASSERT_EQ(builder.build().substr(0, 100), hidden.build().substr(0, 100));

  EXPECT_EQ(refusalOf(builder), "ZP-16: it has two end records, one in the comment of the other");
}

TEST(EndOfDirectory, AnArchiveThatWasAppendedToIsReadByItsLastEndRecord) {
  ZipBuilder builder;
  builder.prefix = twoItems().build();
  builder.add({.name = "new", .content = "content"});

  const ZipDirectory directory = directoryOf(builder);

  ASSERT_EQ(directory.entries().size(), 1u);
  EXPECT_EQ(directory.name(0), "new");
  EXPECT_EQ(faultsOf(builder),
            (Kinds{ZipFaultKind::EarlierDirectory, ZipFaultKind::BytesBeforeFirst}));
}

TEST(EndOfDirectory, AForeignBeginningIsAcceptedWhenTheOffsetsCountIt) {
  ZipBuilder builder = twoItems();
  builder.prefix = "#!/bin/sh\n";

  EXPECT_EQ(refusalOf(builder), "");
  EXPECT_EQ(faultsOf(builder), Kinds{ZipFaultKind::BytesBeforeFirst});
  EXPECT_EQ(refusalOf("#!/bin/sh\n" + twoItems().build()),
            "ZP-16: its offsets do not count the 10 bytes in front of it");
}

TEST(EndOfDirectory, ADirectoryThatIsNotWhereItShouldBeIsRefused) {
  ZipBuilder outside = twoItems();
  outside.directoryOffset = 0xFFFFFF00;
  ZipBuilder tooLong = twoItems();
  tooLong.directorySize = 1000000;
  ZipBuilder elsewhere = twoItems();
  elsewhere.directoryOffset = 3;

  EXPECT_EQ(refusalOf(outside).substr(0, 30), "ZP-16: its directory (offset 4");
  EXPECT_EQ(refusalOf(tooLong).substr(0, 21), "ZP-16: its directory ");
  EXPECT_EQ(refusalOf(elsewhere).substr(0, 5), "ZP-16");
}

TEST(EndOfDirectory, BytesBetweenDirectoryAndEndRecordAreAWarning) {
  ZipBuilder builder = twoItems();
  builder.beforeEnd = "something";

  EXPECT_EQ(refusalOf(builder), "");
  EXPECT_EQ(faultsOf(builder), Kinds{ZipFaultKind::UnusedBytes});
}

TEST(EndOfDirectory, AnEnormousDeclaredDirectoryCostsNoMemory) {
  for (const std::uint64_t size : {std::uint64_t{1} << 50, UINT64_MAX, UINT64_MAX - 60}) {
    ZipBuilder builder = twoItems();
    builder.zip64 = true;
    builder.directorySize = size;

    EXPECT_EQ(refusalOf(builder).substr(0, 5), "ZP-16") << size;
  }
}

TEST(EndOfDirectory, AnEncryptedDirectoryIsRefused) {
  ZipBuilder byRecord = twoItems();
  byRecord.zip64 = true;
  byRecord.zip64Record =
      le32(0x06064b50) + le64(44 + 28) + le16(0x33E) + le16(62) + std::string(40 + 28, '\0');
  ZipBuilder bySignature;
  bySignature.prefix = le32(0x08064b50) + std::string(100, 'x');
  bySignature.directoryOffset = 0;
  bySignature.directorySize = 100;

  EXPECT_EQ(refusalOf(byRecord), "ZP-6: its directory is compressed or encrypted");
  EXPECT_EQ(refusalOf(bySignature), "ZP-6: its directory is encrypted");
}

TEST(EndOfDirectory, Zip64EndRecordsAreReadWithAndWithoutNeed) {
  ZipBuilder builder = twoItems();
  builder.zip64 = true;
  EXPECT_TRUE(faultsOf(builder).empty());
  EXPECT_EQ(directoryOf(builder).entries().size(), 2u);

  const DirectoryLocation location = directoryOf(twoItems()).location();
  builder.endRecord = le32(0x06054b50) + le16(0xFFFF) + le16(0xFFFF) + le16(2) + le16(2) +
                      le32(location.size) + le32(location.offset) + le16(0);

  EXPECT_TRUE(faultsOf(builder).empty());
  EXPECT_EQ(directoryOf(builder).entries().size(), 2u);
}

std::string zip64RecordOfTwoItems(std::uint64_t recordSize = 44) {
  const DirectoryLocation location = directoryOf(twoItems()).location();
  return le32(0x06064b50) + le64(recordSize) + le16(45) + le16(45) + le64(0) + le64(2) + le64(2) +
         le64(location.size) + le64(location.offset);
}

TEST(EndOfDirectory, BytesBehindTheZip64EndRecordAreAWarningUnlessItCountsThem) {
  ZipBuilder gap = twoItems();
  gap.zip64 = true;
  gap.zip64Record = zip64RecordOfTwoItems() + "data";
  ZipBuilder counted = twoItems();
  counted.zip64 = true;
  counted.zip64Record = zip64RecordOfTwoItems(48) + "data";

  const ZipDirectory directory = directoryOf(gap);

  EXPECT_EQ(refusalOf(gap), "");
  ASSERT_EQ(directory.faults().size(), 1u);
  EXPECT_EQ(directory.faults()[0].kind, ZipFaultKind::UnusedBytes);
  EXPECT_EQ(directory.faults()[0].first, gap.build().size() - 22 - 20 - 4);
  EXPECT_EQ(directory.faults()[0].second, 4u);
  EXPECT_EQ(faultsOf(counted), Kinds{});
}

TEST(EndOfDirectory, ASecondZip64EndRecordIsRefusedSinceReadersWouldDiffer) {
  for (const std::uint64_t recordSize : {44u, 44u + 56u}) {
    ZipBuilder builder = twoItems();
    builder.zip64 = true;
    builder.zip64Record = zip64RecordOfTwoItems(recordSize) + zip64RecordOfTwoItems();

    EXPECT_EQ(refusalOf(builder), "ZP-9: it has two ZIP64 end records");
  }
}

TEST(EndOfDirectory, EndRecordsThatDisagreeAreRefused) {
  const DirectoryLocation location = directoryOf(twoItems()).location();
  const auto with = [&](std::uint16_t count, std::uint64_t size, std::uint64_t offset) {
    ZipBuilder builder = twoItems();
    builder.zip64 = true;
    builder.endRecord = le32(0x06054b50) + le32(0) + le16(count) + le16(count) + le32(size) +
                        le32(offset) + le16(0);
    return refusalOf(builder).substr(0, 4);
  };

  EXPECT_EQ(with(2, location.size, location.offset), "");
  EXPECT_EQ(with(3, location.size, location.offset), "ZP-9");
  EXPECT_EQ(with(2, location.size - 1, location.offset), "ZP-9");
  EXPECT_EQ(with(2, location.size, location.offset + 1), "ZP-9");
}

TEST(EndOfDirectory, AZip64EndRecordThatIsNotThereIsRefused) {
  ZipBuilder wrongPlace = twoItems();
  wrongPlace.zip64 = true;
  wrongPlace.zip64Offset = 1;
  ZipBuilder farAway = twoItems();
  farAway.zip64 = true;
  farAway.zip64Offset = UINT64_MAX - 10;
  ZipBuilder behindIt = twoItems();
  behindIt.zip64 = true;
  behindIt.zip64Offset = behindIt.build().size() - 22 - 20;
  ZipBuilder wrongSize = twoItems();
  wrongSize.zip64 = true;
  wrongSize.zip64Record = le32(0x06064b50) + le64(UINT64_MAX) + std::string(44, '\0');
  ZipBuilder noLocator = twoItems();
  noLocator.directoryOffset = 0xFFFFFFFF;

  for (const ZipBuilder* builder : {&wrongPlace, &farAway, &behindIt, &wrongSize, &noLocator}) {
    EXPECT_EQ(refusalOf(*builder).substr(0, 4), "ZP-9");
  }
}

TEST(EndOfDirectory, ALocatorAtTheEndOfAnItemsCommentIsIgnored) {
  ZipBuilder builder = twoItems();
  builder.items[1].comment = le32(0x07064b50) + le32(0) + le64(12345) + le32(1);

  EXPECT_EQ(refusalOf(builder), "");
}

}  // namespace
}  // namespace opc::zippackage
