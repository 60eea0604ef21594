// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "opc/Exception.h"
#include "tests/opc/zippackage/PackageFixture.h"
#include "tests/opc/zippackage/ZipWritersFixture.h"
#include "tests/support/ZipBuilder.h"

namespace opc::zippackage {
namespace {

using detail::OutputFile;
using detail::Zip64Limits;
using detail::ZipWriter;

using test::extraField;
using test::le16;
using test::le32;
using test::le64;
using test::TextSource;

// With the limit lowered, small items take the way of those beyond 4 GiB.
class Zip64Writers : public ZipWriters {
 protected:
  static constexpr Zip64Limits kLow{.value = 1000, .count = 3};
};

TEST_F(Zip64Writers, UseWideFieldsJustWhereTheyAreNeeded) {
  const std::string small = "small";
  const std::string text = test::packableText(30000);
  written(
      [&](ZipWriter& writer, OutputFile&) {
        add(writer, {.name = "small"}, small);
        add(writer, {.name = "large", .time = 1709209831, .isTimeExact = true}, text);
        add(writer, {.name = "behind"}, small);
        writer.finish({});
      },
      kLow);

  const ZipDirectory directory = ZipDirectory::read(PackageFile(path()));
  EXPECT_TRUE(directory.faults().empty());
  EXPECT_EQ(directory.header(0).versionNeeded, 20);
  EXPECT_EQ(directory.header(0).size, 5u);
  EXPECT_EQ(directory.header(1).versionNeeded, 45);
  EXPECT_EQ(directory.header(1).size, 0xFFFFFFFF);
  EXPECT_LT(directory.header(1).headerOffset, 1000u);
  EXPECT_EQ(directory.header(2).size, 5u);
  EXPECT_EQ(directory.header(2).headerOffset, 0xFFFFFFFF);
  EXPECT_EQ(contentOf(0), small);
  EXPECT_EQ(contentOf(1), text);
  EXPECT_EQ(contentOf(2), small);
  EXPECT_EQ(pythonTest(), "None 3\n");
  EXPECT_EQ(test::outputOf("unzip -tqq " + path()), "");
}

TEST_F(Zip64Writers, UseWideFieldsFromTheFirstNumberThatDoesNotFit) {
  // The second item begins behind 30 bytes, a name of one byte and five bytes of data.
  const auto secondHeaderWith = [&](std::uint64_t limit) {
    written(
        [](ZipWriter& writer, OutputFile&) {
          add(writer, {.name = "1", .level = 0}, "small");
          add(writer, {.name = "2", .level = 0}, std::string(36, 'x'));
          writer.finish({});
        },
        {.value = limit, .count = 3});
    return ZipDirectory::read(PackageFile(path())).header(1);
  };

  const CentralHeader narrow = secondHeaderWith(37);
  const CentralHeader wide = secondHeaderWith(36);

  EXPECT_EQ(narrow.headerOffset, 36u);
  EXPECT_EQ(narrow.size, 36u);
  EXPECT_EQ(narrow.packedSize, 36u);
  EXPECT_EQ(wide.headerOffset, 0xFFFFFFFF);
  EXPECT_EQ(wide.size, 0xFFFFFFFF);
  EXPECT_EQ(wide.packedSize, 0xFFFFFFFF);
}

TEST_F(Zip64Writers, WriteTheWideEndRecordOnlyFromTheirCountOn) {
  const auto archive = [&](int count) {
    return written(
        [&](ZipWriter& writer, OutputFile&) {
          for (int i = 0; i < count; ++i) add(writer, {.name = "x"}, "");
          writer.finish({});
        },
        kLow);
  };

  EXPECT_EQ(archive(2).find("PK\x06\x06"), std::string::npos);
  EXPECT_NE(archive(3).find("PK\x06\x06"), std::string::npos);
}

TEST_F(Zip64Writers, WriteTheWideEndRecordAndItsLocatorByteForByte) {
  const std::string bytes = written(
      [](ZipWriter& writer, OutputFile&) {
        for (const char* name : {"a", "b", "c"}) add(writer, {.name = name}, "");
        writer.finish({});
      },
      kLow);

  constexpr std::size_t kItems = 3;
  const std::size_t directory = kItems * (30 + 1);
  const std::size_t record = directory + kItems * (46 + 1);
  EXPECT_EQ(bytes.substr(record),
            "PK\x06\x06" + le64(44) + le16(0x32D) + le16(45) + le32(0) + le32(0) + le64(3) +
                le64(3) + le64(record - directory) + le64(directory) + "PK\x06\x07" + le32(0) +
                le64(record) + le32(1) + "PK\x05\x06" + le32(0) + le16(0xFFFF) + le16(0xFFFF) +
                le32(record - directory) + le32(directory) + le16(0));
}

TEST_F(Zip64Writers, StreamLargeItemsWithWideSizes) {
  const std::string text = test::packableText(17000000);
  const std::string noise = test::randomText(17000000);
  written(
      [&](ZipWriter& writer, OutputFile&) {
        add(writer, {.name = "text"}, text);
        add(writer, {.name = "noise"}, noise);
        writer.finish({});
      },
      kLow);

  EXPECT_TRUE(contentOf(0) == text);
  EXPECT_TRUE(contentOf(1) == noise);
  EXPECT_EQ(pythonTest(), "None 2\n");
}

TEST_F(Zip64Writers, RefuseASourceThatGrowsOverTheLimitAfterItsHeader) {
  TextSource source(test::packableText(19000000));
  source.declaring(17000000);
  ErrorCode code{};

  const std::string error = test::errorOf(
      [&] {
        written([&](ZipWriter& writer,
                    OutputFile&) { writer.add({.name = "x"}, source, [](std::uint64_t) {}); },
                {.value = 18000000, .count = 3});
      },
      &code);

  EXPECT_EQ(error, "cannot pack 'text source': it grew over 4 GiB while it was read");
  EXPECT_EQ(code, ErrorCode::TooLarge);
}

// An item of another package, taken over to another offset.
class CopiedEntries : public ZipWriters {
 protected:
  /// The record of `item` after it was moved to `offset`.
  std::string movedTo(std::uint64_t offset, test::ZipItem item, Zip64Limits limits = {}) {
    test::ZipBuilder builder;
    builder.add(std::move(item));
    const std::string old = (folder_ / "old.zip").string();
    test::writeFile(old, builder.build());
    const ZipDirectory directory = ZipDirectory::read(PackageFile(old));
    directory.refuseFaults();
    const std::string bytes = written(
        [&](ZipWriter& writer, OutputFile&) {
          writer.addCopied(directory, 0, offset);
          writer.finish({});
        },
        limits);
    return bytes.substr(0, bytes.find("PK\x05\x06"));
  }
};

TEST_F(CopiedEntries, KeepEveryByteOfTheirRecordButTheOffset) {
  test::ZipItem item{.name = "n\xff", .content = "content"};
  item.comment = "a comment";
  item.central.extra = extraField(0xA220, "hint") + "malformed";
  item.central.madeBy = 0x1234;
  item.central.internalAttributes = 1;
  const std::string before = movedTo(0, item);

  const std::string after = movedTo(0x12345678, item);

  EXPECT_EQ(before.substr(0, 42), after.substr(0, 42));
  EXPECT_EQ(before.substr(42, 4), le32(0));
  EXPECT_EQ(after.substr(42, 4), le32(0x12345678));
  EXPECT_EQ(before.substr(46), after.substr(46));
  EXPECT_EQ(after.substr(46), "n\xff" + item.central.extra + "a comment");
}

TEST_F(CopiedEntries, GetAWideOffsetWhenTheyMoveBeyondFourGibibytes) {
  test::ZipItem item{.name = "n", .content = "content"};
  item.comment = "c";
  item.central.extra = extraField(7, "x") + "!";

  const std::string record = movedTo(0x100000000, item);

  EXPECT_EQ(record.substr(42, 4), le32(0xFFFFFFFF));
  EXPECT_EQ(record.substr(46, record.find("PK\x06\x06") - 46),
            "n" + extraField(1, le64(0x100000000)) + extraField(7, "x") + "!" + "c");
}

TEST_F(CopiedEntries, UseAWideOffsetAsSoonAsTheNarrowFieldIsTooSmall) {
  const test::ZipItem item{.name = "n", .content = "content"};

  const std::string narrow = movedTo(0xFFFFFFFE, item);
  const std::string wide = movedTo(0xFFFFFFFF, item);

  EXPECT_EQ(narrow.substr(42, 5), le32(0xFFFFFFFE) + "n");
  EXPECT_EQ(wide.substr(42, 4), le32(0xFFFFFFFF));
  EXPECT_EQ(wide.substr(46, 13), "n" + extraField(1, le64(0xFFFFFFFF)));
}

TEST_F(CopiedEntries, KeepTheirWideSizesNextToTheNewOffset) {
  test::ZipItem item{.name = "n", .content = "content"};
  item.central.size = 0xFFFFFFFF;
  item.central.extra = extraField(7, "x") + extraField(1, le64(7));

  const std::string wide = movedTo(0x100000000, item);
  const std::string narrow = movedTo(5, item);

  EXPECT_EQ(wide.substr(47, wide.find("PK\x06\x06") - 47),
            extraField(1, le64(7) + le64(0x100000000)) + extraField(7, "x"));
  EXPECT_EQ(narrow.substr(47), item.central.extra);
}

TEST_F(CopiedEntries, WithoutRoomForAWideOffsetAreRefused) {
  constexpr std::size_t kWideOffset = 4 + 8;
  test::ZipItem item{.name = "n", .content = "content"};
  item.central.extra = extraField(7, std::string(0xFFFF - 4 - kWideOffset, 'x'));
  const std::string record = movedTo(0x100000000, item);
  EXPECT_EQ(record.substr(30, 2), le16(0xFFFF));
  EXPECT_EQ(record.substr(47, kWideOffset), extraField(1, le64(0x100000000)));

  item.central.extra = extraField(7, std::string(0xFFFF - 4 - kWideOffset + 1, 'x'));
  ErrorCode code{};
  const std::string error = test::errorOf([&] { movedTo(0x100000000, item); }, &code);

  EXPECT_EQ(error, "cannot keep item 'n': its extra fields leave no room for its offset");
  EXPECT_EQ(code, ErrorCode::TooLarge);
}

TEST_F(CopiedEntries, LoseAWideOffsetThatIsNoLongerNeeded) {
  test::ZipItem item{.name = "n", .content = "content"};
  item.central.offset = 0xFFFFFFFF;
  item.central.extra = extraField(1, le64(0)) + extraField(7, "x");

  const std::string record = movedTo(5, item);

  EXPECT_EQ(record.substr(42, 4), le32(5));
  EXPECT_EQ(record.substr(47), extraField(7, "x"));
}

}  // namespace
}  // namespace opc::zippackage
