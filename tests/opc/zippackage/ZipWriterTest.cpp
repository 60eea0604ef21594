// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/ZipWriter.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <string>

#include "opc/zippackage/ExtraFields.h"
#include "opc/zippackage/ZipItemReader.h"
#include "tests/opc/zippackage/PackageFixture.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/ZipBuilder.h"

namespace opc::zippackage {
namespace {

using detail::ItemHead;
using detail::OutputFile;
using detail::Zip64Limits;
using detail::ZipWriter;

using test::extraField;
using test::le16;
using test::le32;
using test::le64;
using test::TextSource;

constexpr std::int64_t kTime = 1709209831;  // 2024-02-29 12:30:31 UTC
constexpr std::uint32_t kDosTime = ((44u << 9 | 2 << 5 | 29) << 16) | (12 << 11 | 30 << 5 | 15);

class ZipWriters : public testing::Test {
 protected:
  /// Has `body` write a file, and returns its bytes.
  std::string written(const std::function<void(ZipWriter&, OutputFile&)>& body,
                      Zip64Limits limits = {}) {
    const FileDescriptor file(::open(path().c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
    OutputFile out(file.get());
    ZipWriter writer(out, limits);
    body(writer, out);
    out.flush();
    return test::readFile(path());
  }

  std::string path() const { return (folder_ / "p.zip").string(); }

  static void add(ZipWriter& writer, const ItemHead& head, const std::string& text) {
    TextSource source(text);
    writer.add(head, source, [](std::uint64_t) {});
  }

  std::string contentOf(std::size_t entry) {
    const PackageFile file(path());
    const ZipDirectory directory = ZipDirectory::read(file);
    directory.refuseFaults();
    ZipItemReader reader(file, directory);
    ByteBuffer bytes;
    reader.read(entry, bytes, UINT64_MAX);
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
  }

  std::string pythonTest() const {
    return test::outputOf("/usr/bin/python3 -c \"import zipfile; z = zipfile.ZipFile('" + path() +
                          "'); print(z.testzip(), len(z.infolist()))\"");
  }

  test::TemporaryFolder folder_;
};

TEST_F(ZipWriters, WithoutItemsWriteJustAnEndRecord) {
  const std::string bytes = written([](ZipWriter& writer, OutputFile&) { writer.finish({}); });

  EXPECT_EQ(bytes, le32(0x06054b50) + std::string(18, '\0'));
}

TEST_F(ZipWriters, WriteAStoredItemByteForByte) {
  const std::string bytes = written([](ZipWriter& writer, OutputFile&) {
    add(writer, {.name = "a.txt", .level = 0, .time = kTime}, "text");
    writer.finish({});
  });

  const std::string common =
      le32(kDosTime) + le32(test::crcOf("text")) + le32(4) + le32(4) + le16(5) + le16(0);
  EXPECT_EQ(bytes, "PK\x03\x04" + le16(20) + le16(0) + le16(0) + common + "a.txt" + "text" +
                       "PK\x01\x02" + le16(0x32D) + le16(20) + le16(0) + le16(0) + common +
                       le16(0) + le16(0) + le16(0) + le32(0100644u << 16) + le32(0) + "a.txt" +
                       "PK\x05\x06" + le32(0) + le16(1) + le16(1) + le32(51) + le32(39) + le16(0));
}

TEST_F(ZipWriters, KeepAnExactTimeInBothHeaders) {
  const std::string bytes = written([](ZipWriter& writer, OutputFile&) {
    add(writer, {.name = "a", .time = kTime, .isTimeExact = true}, "text");
    writer.finish({});
  });

  const std::string field = extraField(0x5455, "\x01" + le32(kTime));
  EXPECT_EQ(bytes.substr(31, 9), field);
  EXPECT_EQ(bytes.substr(31 + 9 + 4 + 46 + 1, 9), field);
}

TEST_F(ZipWriters, LeaveOutAnExactTimeThatNoFieldCanHold) {
  using Limits = std::numeric_limits<std::int64_t>;
  for (const std::int64_t time : {std::int64_t{-11644473600}, Limits::min(), Limits::max()}) {
    const std::string bytes = written([&](ZipWriter& writer, OutputFile&) {
      add(writer, {.name = "a", .time = time, .isTimeExact = true}, "text");
      writer.finish({});
    });

    EXPECT_EQ(bytes.find("UT"), std::string::npos);
    EXPECT_EQ(bytes.size(), 30u + 1 + 4 + 46 + 1 + 22);
  }
}

// From the buffer, from the file, and in the kernel.
TEST_F(ZipWriters, RepeatPackedDataAsIfTheyWerePackedAgain) {
  const std::string noise = test::randomText(std::size_t{700} << 10);
  for (const std::string& text : {test::packableText(5000), noise, std::string(100, 'x')}) {
    for (const std::size_t between : {0u, 3u, 1u << 20, 3u << 20}) {
      const auto fill = [&](ZipWriter& writer, bool isRepeated) {
        TextSource source(text);
        const auto first = writer.add({.name = "first", .time = kTime}, source, [](auto) {});
        add(writer, {.name = "between", .level = 0}, std::string(between, 'b'));
        const ItemHead head{.name = "second", .executable = true, .time = 0};
        if (isRepeated) {
          writer.addRepeated(head, first);
        } else {
          add(writer, head, text);
        }
        writer.finish({});
      };
      const std::string packed = written([&](ZipWriter& w, OutputFile&) { fill(w, false); });

      const std::string repeated = written([&](ZipWriter& w, OutputFile&) { fill(w, true); });

      EXPECT_TRUE(repeated == packed) << text.size() << " " << between;
    }
  }
}

TEST_F(ZipWriters, DeflateWhatGetsSmallerAndStoreTheRest) {
  const std::string text = test::packableText(20000);
  const std::string noise = test::randomText(20000);
  written([&](ZipWriter& writer, OutputFile&) {
    add(writer, {.name = "text"}, text);
    add(writer, {.name = "noise"}, noise);
    add(writer, {.name = "stored", .level = 0}, text);
    add(writer, {.name = "empty"}, "");
    writer.finish({});
  });

  const ZipDirectory directory = ZipDirectory::read(PackageFile(path()));
  EXPECT_EQ(directory.entries()[0].method, kDeflated);
  EXPECT_EQ(directory.entries()[1].method, kStored);
  EXPECT_EQ(directory.entries()[2].method, kStored);
  EXPECT_EQ(directory.entries()[3].method, kStored);
  EXPECT_EQ(contentOf(0), text);
  EXPECT_EQ(contentOf(1), noise);
  EXPECT_EQ(contentOf(2), text);
  EXPECT_EQ(contentOf(3), "");
  EXPECT_EQ(pythonTest(), "None 4\n");
}

TEST_F(ZipWriters, PackHarderAtHigherLevels) {
  const std::string text = test::packableText(500000);
  written([&](ZipWriter& writer, OutputFile&) {
    for (int level = 0; level <= 9; ++level) {
      add(writer, {.name = std::string("123456789a").substr(std::size_t(level), 1), .level = level},
          text);
    }
    writer.finish({});
  });

  const ZipDirectory directory = ZipDirectory::read(PackageFile(path()));
  EXPECT_EQ(directory.entries()[0].packedSize, text.size());
  EXPECT_GT(directory.entries()[1].packedSize, directory.entries()[6].packedSize);
  EXPECT_GT(directory.entries()[6].packedSize, directory.entries()[9].packedSize);
}

TEST_F(ZipWriters, TakeASourceAsItReadsWhateverItSaid) {
  const std::string text = test::packableText(200000);
  written([&](ZipWriter& writer, OutputFile&) {
    for (const std::uint64_t declared : {0u, 1u, 199999u, 200001u, 1000000u, 20000000u}) {
      TextSource source(text);
      source.declaring(declared);
      writer.add({.name = "x"}, source, [](std::uint64_t) {});
    }
    writer.finish({});
  });

  for (std::size_t entry = 0; entry < 6; ++entry) {
    EXPECT_EQ(ZipDirectory::read(PackageFile(path())).entries()[entry].size, text.size());
  }
  EXPECT_EQ(pythonTest().substr(0, 4), "None");
}

TEST_F(ZipWriters, StoreASmallSourceThatSaidItWasLargeAndDoesNotGetSmaller) {
  const std::string noise = test::randomText(1000);
  const std::string bytes = written([&](ZipWriter& writer, OutputFile&) {
    TextSource source(noise);
    source.declaring(20000000);
    writer.add({.name = "x"}, source, [](std::uint64_t) {});
    writer.finish({});
  });

  const ZipDirectory directory = ZipDirectory::read(PackageFile(path()));
  EXPECT_EQ(directory.entries()[0].method, kStored);
  EXPECT_EQ(directory.entries()[0].packedSize, noise.size());
  EXPECT_LT(bytes.size(), noise.size() + 200);  // nothing of the attempt to pack it is left
  EXPECT_EQ(contentOf(0), noise);
  EXPECT_EQ(pythonTest(), "None 1\n");
}

class LargeSources : public ZipWriters {};

TEST_F(LargeSources, AreStreamed) {
  const std::string text = test::packableText(40000000);
  std::uint64_t last = 0;
  std::size_t calls = 0;
  written([&](ZipWriter& writer, OutputFile&) {
    TextSource source(text);
    writer.add({.name = "large"}, source, [&](std::uint64_t bytes) {
      EXPECT_GE(bytes, last);
      last = bytes;
      ++calls;
    });
    add(writer, {.name = "after"}, "small");
    writer.finish({});
  });

  EXPECT_EQ(last, text.size());
  EXPECT_GT(calls, 20u);
  EXPECT_EQ(ZipDirectory::read(PackageFile(path())).entries()[0].method, kDeflated);
  EXPECT_TRUE(contentOf(0) == text);
  EXPECT_EQ(contentOf(1), "small");
  EXPECT_EQ(pythonTest(), "None 2\n");
}

TEST_F(LargeSources, ThatDoNotGetSmallerAreStored) {
  const std::string noise = test::randomText(17000000);
  const std::string bytes = written([&](ZipWriter& writer, OutputFile&) {
    add(writer, {.name = "before"}, "small");
    add(writer, {.name = "large"}, noise);
    add(writer, {.name = "plain", .level = 0}, noise);
    add(writer, {.name = "after"}, "small");
    writer.finish({});
  });

  EXPECT_LT(bytes.size(), 2 * noise.size() + 1000);
  EXPECT_EQ(ZipDirectory::read(PackageFile(path())).entries()[1].method, kStored);
  EXPECT_TRUE(contentOf(1) == noise);
  EXPECT_EQ(contentOf(3), "small");
  EXPECT_EQ(pythonTest(), "None 4\n");
}

TEST_F(LargeSources, ThatSaidTheyWereSmallAreStreamedFromWhereTheyGrow) {
  const std::string text = test::packableText(18000000);
  const std::string noise = test::randomText(18000000);
  written([&](ZipWriter& writer, OutputFile&) {
    TextSource growing(text);
    growing.declaring(100);
    writer.add({.name = "growing"}, growing, [](std::uint64_t) {});
    TextSource noisy(noise);
    noisy.declaring(100);
    writer.add({.name = "noisy"}, noisy, [](std::uint64_t) {});
    writer.finish({});
  });

  EXPECT_TRUE(contentOf(0) == text);
  EXPECT_TRUE(contentOf(1) == noise);
  EXPECT_EQ(pythonTest(), "None 2\n");
}

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
        add(writer, {.name = "large", .time = kTime, .isTimeExact = true}, text);
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
  test::ZipItem item{.name = "n", .content = "content"};
  item.central.extra = extraField(7, std::string(0xFFFF - 4, 'x'));

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
