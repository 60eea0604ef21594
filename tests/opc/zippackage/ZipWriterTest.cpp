// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/ZipWriter.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

#include "tests/opc/zippackage/PackageFixture.h"
#include "tests/opc/zippackage/ZipWritersFixture.h"
#include "tests/support/ZipBuilder.h"

namespace opc::zippackage {
namespace {

using detail::ItemHead;
using detail::OutputFile;
using detail::ZipWriter;

using test::extraField;
using test::le16;
using test::le32;
using test::TextSource;

constexpr std::int64_t kTime = 1709209831;  // 2024-02-29 12:30:31 UTC
constexpr std::uint32_t kDosTime = ((44u << 9 | 2 << 5 | 29) << 16) | (12 << 11 | 30 << 5 | 15);

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

}  // namespace
}  // namespace opc::zippackage
