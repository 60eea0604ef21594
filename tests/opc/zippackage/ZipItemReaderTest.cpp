// SPDX-License-Identifier: MIT
#include "opc/zippackage/ZipItemReader.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "tests/opc/zippackage/PackageFixture.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/ZipBuilder.h"

namespace opc::zippackage {
namespace {

using test::deflated;
using test::extraField;
using test::le32;
using test::le64;
using test::ZipBuilder;
using test::ZipItem;

constexpr std::uint64_t kNoLimit = UINT64_MAX;

/// A package on disk, with a reader over it.
class OpenedZip {
 public:
  explicit OpenedZip(const ZipBuilder& builder)
      : path_(write(builder)),
        file_(path_),
        directory_(ZipDirectory::read(file_)),
        reader_(file_, directory_) {
    directory_.refuseFaults();
  }

  ZipItemReader& reader() { return reader_; }
  const std::string& path() const { return path_; }
  const ZipDirectory& directory() const { return directory_; }

  std::string read(std::size_t entry, std::uint64_t limit = kNoLimit) {
    ByteBuffer bytes;
    reader_.read(entry, bytes, limit);
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
  }

  /// Through a stream of the kind for large items, whatever the size.
  std::string stream(std::size_t entry) {
    const auto stream = reader_.open(entry);
    std::string text;
    unsigned char piece[1000];
    while (!stream->isEnd()) {
      const std::size_t count = stream->read(piece, sizeof piece);
      text.append(reinterpret_cast<const char*>(piece), count);
    }
    return text;
  }

 private:
  std::string write(const ZipBuilder& builder) {
    test::writeFile(folder_ / "p.zip", builder.build());
    return (folder_ / "p.zip").string();
  }

  test::TemporaryFolder folder_;
  std::string path_;
  PackageFile file_;
  ZipDirectory directory_;
  ZipItemReader reader_;
};

ZipBuilder of(ZipItem item) {
  ZipBuilder builder;
  builder.add({.name = "before", .content = "something in front"});
  builder.add(std::move(item));
  builder.add({.name = "after", .content = "something behind"});
  return builder;
}

ZipItem packed() {
  return {.name = "x.txt", .content = test::packableText(5000), .deflate = true};
}
ZipItem stored() {
  return {.name = "x.txt", .content = "stored content"};
}

/// The rule that reading the item in the middle breaks; its content when there is none.
std::string outcome(ZipItem item) {
  OpenedZip zip(of(std::move(item)));
  try {
    return zip.read(1);
  } catch (const FormatError& e) {
    return e.rule();
  }
}

TEST(ZipItemReader, ReadsStoredAndDeflatedItems) {
  OpenedZip zip(of(packed()));

  EXPECT_EQ(zip.read(0), "something in front");
  EXPECT_EQ(zip.read(1), packed().content);
  EXPECT_EQ(zip.read(2), "something behind");
  EXPECT_EQ(zip.stream(1), packed().content);
}

TEST(ZipItemReader, ReadsItemsInAnyOrder) {
  ZipBuilder builder;
  for (int i = 0; i < 200; ++i) {
    builder.add({.name = std::to_string(i), .content = test::randomText(3000, unsigned(i))});
  }
  OpenedZip zip(builder);

  for (const std::size_t entry : {0u, 1u, 199u, 2u, 3u, 100u, 101u, 99u, 0u, 199u}) {
    EXPECT_EQ(zip.read(entry), builder.items[entry].content) << entry;
  }
  for (std::size_t entry = 0; entry < 200; ++entry) {
    ASSERT_EQ(zip.read(entry), builder.items[entry].content) << entry;
  }
}

TEST(ZipItemReader, AnItemOverTheLimitIsRefusedUnread) {
  OpenedZip zip(of(stored()));
  ErrorCode code{};

  EXPECT_EQ(zip.read(1, 14), "stored content");
  EXPECT_EQ(test::errorOf([&] { zip.read(1, 13); }, &code),
            "its size of 14 bytes is over the limit of 13");
  EXPECT_EQ(code, ErrorCode::TooLarge);
}

TEST(ZipItemReader, DataThatReachIntoTheDirectoryAreRefused) {
  for (ZipItem item : {stored(), packed()}) {
    item.local.extraLength = 0xFFFF;

    EXPECT_EQ(outcome(item), "RB-2");
  }
}

TEST(ZipItemReader, ALocalHeaderThatDiffersFromTheDirectoryIsRefused) {
  const std::function<void(ZipItem&)> changes[] = {
      [](ZipItem& i) { i.local.name = "y.txt"; },
      [](ZipItem& i) { i.local.method = i.deflate ? 0 : 8; },
      [](ZipItem& i) { i.local.crc = 1; },
      [](ZipItem& i) { i.local.size = 1; },
      [](ZipItem& i) { i.local.packedSize = 1; },
      [](ZipItem& i) { i.local.signature = 0x04034b51; },
      [](ZipItem& i) { i.local.flags = 1; },
      [](ZipItem& i) { i.local.nameLength = 4; },
  };
  for (const auto& change : changes) {
    for (ZipItem item : {stored(), packed()}) {
      const auto index = &change - changes;
      EXPECT_EQ(outcome(item), item.content) << index;

      change(item);

      EXPECT_EQ(outcome(item), "ZP-7") << index;
    }
  }
}

TEST(ZipItemReader, LocalTimesAndExtraFieldsMayDiffer) {
  ZipItem item = packed();
  item.local.dosTime = 0;
  item.local.versionNeeded = 99;
  item.local.extra = extraField(7, std::string(60000, 'x')) + "malformed";

  EXPECT_EQ(outcome(item), item.content);
}

struct DescriptorForm {
  bool deflate;
  bool withSignature;
  bool wide;
};

class DescriptorForms : public testing::TestWithParam<DescriptorForm> {
 protected:
  static ZipItem item() {
    ZipItem item = GetParam().deflate ? packed() : stored();
    item.descriptor = true;
    item.descriptorSignature = GetParam().withSignature;
    item.descriptorWide = GetParam().wide;
    return item;
  }
  static std::string descriptor(std::uint32_t crc, std::uint64_t packedSize, std::uint64_t size) {
    const auto number = [](std::uint64_t n) { return GetParam().wide ? le64(n) : le32(n); };
    return (GetParam().withSignature ? le32(0x08074b50) : "") + le32(crc) + number(packedSize) +
           number(size);
  }
};

TEST_P(DescriptorForms, AreRead) {
  EXPECT_EQ(outcome(item()), item().content);
}

TEST_P(DescriptorForms, AreReadWhenTheLocalHeaderHasTheRightValuesToo) {
  ZipItem right = item();
  right.local.crc = test::crcOf(right.content);
  right.local.size = static_cast<std::uint32_t>(right.content.size());
  ZipItem full = item();
  full.local.crc = full.local.size = full.local.packedSize = 0xFFFFFFFF;

  EXPECT_EQ(outcome(right), right.content);
  EXPECT_EQ(outcome(full), full.content);
}

TEST_P(DescriptorForms, WithAnotherValueThanTheDirectoryAreRefused) {
  const std::string content = item().content;
  const std::uint64_t packedSize = item().deflate ? deflated(content).size() : content.size();
  const std::uint32_t crc = test::crcOf(content);
  for (const std::string& wrong :
       {descriptor(crc + 1, packedSize, content.size()),
        descriptor(crc, packedSize + 1, content.size()),
        descriptor(crc, packedSize, content.size() + 1), std::string()}) {
    ZipItem changed = item();
    changed.descriptorBytes = wrong;

    EXPECT_EQ(outcome(changed), "ZP-8");
  }
  ZipItem same = item();
  same.descriptorBytes = descriptor(crc, packedSize, content.size());
  EXPECT_EQ(outcome(same), content);
}

TEST_P(DescriptorForms, DoNotExcuseWrongValuesInTheLocalHeader) {
  ZipItem size = item();
  size.local.size = 3;
  ZipItem crc = item();
  crc.local.crc = 3;

  EXPECT_EQ(outcome(size), "ZP-7");
  EXPECT_EQ(outcome(crc), "ZP-7");
}

TEST_P(DescriptorForms, CountForTheEndOfTheItem) {
  OpenedZip zip(of(item()));

  EXPECT_EQ(zip.reader().endOf(1), zip.directory().entries()[2].headerOffset);
}

// The shorter forms then begin in the same way as the longer ones.
TEST_P(DescriptorForms, OfAnEmptyItemCountForItsEndToo) {
  ZipItem empty = item();
  empty.content = "";
  OpenedZip zip(of(empty));
  ZipBuilder atTheEnd;
  atTheEnd.add(empty);
  OpenedZip last(atTheEnd);

  EXPECT_EQ(zip.read(1), "");
  EXPECT_EQ(zip.reader().endOf(1), zip.directory().entries()[2].headerOffset);
  EXPECT_EQ(last.reader().endOf(0), last.directory().location().offset);
}

INSTANTIATE_TEST_SUITE_P(
    ZipItemReader, DescriptorForms,
    testing::Values(DescriptorForm{false, false, false}, DescriptorForm{false, false, true},
                    DescriptorForm{false, true, false}, DescriptorForm{false, true, true},
                    DescriptorForm{true, false, false}, DescriptorForm{true, false, true},
                    DescriptorForm{true, true, false}, DescriptorForm{true, true, true}));

TEST(ZipItemReader, DataThatDoNotMatchSizeOrChecksumAreDamaged) {
  ZipItem crc = packed();
  crc.local.crc = crc.central.crc = 1;
  ZipItem shorter = packed();
  shorter.local.size = shorter.central.size = 4999;
  ZipItem longer = packed();
  longer.local.size = longer.central.size = 5001;
  ZipItem surplus = packed();
  surplus.packed = deflated(surplus.content) + "x";
  ZipItem cut = packed();
  cut.packed = deflated(cut.content);
  cut.packed->pop_back();
  ZipItem noStream = packed();
  noStream.packed = "this is not a deflate stream";
  ZipItem storedCrc = stored();
  storedCrc.local.crc = storedCrc.central.crc = 1;

  for (const ZipItem* item : {&crc, &shorter, &longer, &surplus, &cut, &noStream, &storedCrc}) {
    EXPECT_EQ(outcome(*item), "ZP-15");
  }
}

TEST(ZipItemReader, AnImplausibleSizeIsRefusedBeforeAnythingIsAllocated) {
  ZipItem item = packed();
  item.central.size = item.local.size = 0xFFFFFFF0;
  ZipItem enormous = packed();
  enormous.central.size = enormous.local.size = 0xFFFFFFFF;
  const std::string extra = extraField(1, le64(std::uint64_t{1} << 50));
  enormous.central.extra = enormous.local.extra = extra;
  OpenedZip zip(of(enormous));

  EXPECT_EQ(outcome(item), "ZP-15");
  EXPECT_EQ(outcome(enormous), "ZP-15");
  EXPECT_EQ(test::ruleOf([&] { zip.reader().open(1); }), "ZP-15");
}

TEST(ZipItemReader, AnEmptyItemMayBeDeflatedWithoutAnyData) {
  EXPECT_EQ(outcome({.name = "e", .deflate = true, .packed = ""}), "");
  EXPECT_EQ(outcome({.name = "e", .deflate = true}), "");
  EXPECT_EQ(outcome({.name = "e"}), "");
}

TEST(ZipItemReader, Zip64SizesInTheLocalHeaderAreReadInEveryForm) {
  ZipItem both = stored();
  both.local.size = both.local.packedSize = 0xFFFFFFFF;
  both.local.extra = extraField(1, le64(14) + le64(14));
  ZipItem one = stored();
  one.local.size = 0xFFFFFFFF;
  one.local.extra = extraField(1, le64(14));
  ZipItem unneeded = stored();
  unneeded.local.extra = extraField(1, le64(0) + le64(0));
  ZipItem unset = stored();
  unset.descriptor = unset.descriptorWide = true;
  unset.local.size = unset.local.packedSize = 0xFFFFFFFF;
  unset.local.extra = extraField(1, le64(0) + le64(0));
  ZipItem missing = stored();
  missing.local.size = missing.local.packedSize = 0xFFFFFFFF;
  ZipItem wrong = both;
  wrong.local.extra = extraField(1, le64(14) + le64(15));

  for (const ZipItem* item : {&both, &one, &unneeded, &unset}) {
    EXPECT_EQ(outcome(*item), item->content);
  }
  EXPECT_EQ(outcome(missing), "ZP-9");
  EXPECT_EQ(outcome(wrong), "ZP-7");
}

TEST(ZipItemReader, TheEndOfAnItemCountsItsLocalExtraFields) {
  ZipItem item = stored();
  item.local.extra = extraField(7, "abc");
  ZipBuilder builder = of(item);
  builder.items[2].before = "unused";
  OpenedZip zip(builder);

  EXPECT_EQ(zip.reader().endOf(1), zip.directory().entries()[2].headerOffset - 6);
}

TEST(ZipItemReader, TheLocalExtraFieldsAreHandedOutAsTheyAre) {
  ZipItem item = stored();
  item.local.extra = "malformed";
  item.central.extra = extraField(7, "abc");
  OpenedZip zip(of(item));

  const Bytes extra = zip.reader().localExtra(1);

  EXPECT_EQ(std::string(extra.begin(), extra.end()), "malformed");
  EXPECT_TRUE(zip.reader().localExtra(0).empty());
}

TEST(ZipItemReader, AFileThatIsCutMeanwhileIsAnError) {
  ZipBuilder builder = of({.name = "x", .content = test::randomText(50000)});
  OpenedZip zip(builder);
  std::filesystem::resize_file(zip.path(), 20000);
  ErrorCode code{};

  EXPECT_EQ(test::errorOf([&] { zip.read(1); }, &code), "the file was cut while it was being read");
  EXPECT_EQ(code, ErrorCode::Damaged);
  EXPECT_EQ(zip.read(0), "something in front");
}

// Items above 16 MiB are streamed. Packed, the text is small, so it does not take long.
class LargeItems : public testing::Test {
 protected:
  static ZipItem item() {
    ZipItem item{.name = "large", .content = std::string(17000000, 'z'), .deflate = true};
    item.content[16999999] = 'e';
    return item;
  }
  static std::string streamed(ZipItem item) {
    OpenedZip zip(of(std::move(item)));
    try {
      return zip.stream(1);
    } catch (const FormatError& e) {
      return e.rule();
    }
  }
};

TEST_F(LargeItems, AreStreamedAndCanBeReadAtOnce) {
  OpenedZip zip(of(item()));

  EXPECT_TRUE(zip.stream(1) == item().content);
  EXPECT_TRUE(zip.read(1) == item().content);
}

TEST_F(LargeItems, ThatAreStoredAreStreamedToo) {
  ZipItem plain = item();
  plain.deflate = false;
  OpenedZip zip(of(plain));

  EXPECT_TRUE(zip.stream(1) == plain.content);
  EXPECT_TRUE(zip.read(1) == plain.content);
}

TEST_F(LargeItems, AreCheckedAsSmallOnesAre) {
  ZipItem crc = item();
  crc.local.crc = crc.central.crc = 1;
  ZipItem shorter = item();
  shorter.local.size = shorter.central.size = 16999999;
  ZipItem longer = item();
  longer.local.size = longer.central.size = 17000001;
  ZipItem surplus = item();
  surplus.packed = deflated(surplus.content) + "x";
  ZipItem cut = item();
  cut.packed = deflated(cut.content);
  cut.packed->pop_back();
  ZipItem damaged = item();
  damaged.packed = deflated(damaged.content);
  (*damaged.packed)[50] = '\xff';
  (*damaged.packed)[51] = '\xff';
  ZipItem descriptor = item();
  descriptor.descriptor = true;
  descriptor.descriptorBytes = std::string(24, 'x');

  for (const ZipItem* item : {&crc, &shorter, &longer, &surplus, &cut, &damaged}) {
    EXPECT_EQ(streamed(*item), "ZP-15");
  }
  EXPECT_EQ(streamed(descriptor), "ZP-8");
}

TEST_F(LargeItems, KeepTheirLastBytesUntilTheyAreChecked) {
  ZipItem wrong = item();
  wrong.local.crc = wrong.central.crc = 1;
  OpenedZip zip(of(wrong));
  const auto stream = zip.reader().open(1);
  std::string text;
  std::string piece(1000000, '\0');

  EXPECT_THROW(
      while (const std::size_t count =
                 stream->read(reinterpret_cast<unsigned char*>(piece.data()), piece.size())) {
        text.append(piece, 0, count);
      },
      FormatError);

  EXPECT_LT(text.size(), wrong.content.size());
}

TEST_F(LargeItems, WhosePackedDataAreLargeAndUnpackToNothingAreChecked) {
  // 4,000,000 empty stored blocks, then the last one.
  std::string blocks;
  for (int i = 0; i < 4000000; ++i) blocks += std::string("\0\0\0\xff\xff", 5);
  ZipItem nothing{
      .name = "n", .deflate = true, .packed = blocks + std::string("\1\0\0\xff\xff", 5)};
  ZipItem endless = nothing;
  endless.packed = blocks;

  EXPECT_EQ(streamed(nothing), "");
  EXPECT_EQ(streamed(endless), "ZP-15");
}

}  // namespace
}  // namespace opc::zippackage
