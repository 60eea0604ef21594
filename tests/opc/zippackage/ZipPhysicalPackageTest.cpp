// SPDX-License-Identifier: MIT
#include "opc/zippackage/ZipPhysicalPackage.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "tests/opc/zippackage/PackageFixture.h"
#include "tests/opc/zippackage/ZipPackagesFixture.h"
#include "tests/support/ZipBuilder.h"

namespace opc::zippackage {
namespace {

namespace fs = std::filesystem;
using interfaces::CompressionType;
using interfaces::ItemIndex;
using interfaces::ItemInfo;
using interfaces::ItemKind;
using interfaces::NewItem;
using interfaces::OpenMode;
using test::TextSource;

TEST_F(ZipPackages, KeepWhatWasPutIn) {
  const std::string text = test::packableText(100000);
  test::makePackage(path(),
                    {"[Content_Types].xml", text, "a/b.bin", test::randomText(5000), "e", ""});

  const auto holder = opened(OpenMode::Read);
  auto& package = *holder;

  EXPECT_EQ(package.itemCount(), 3u);
  EXPECT_EQ(test::textOf(package, "[Content_Types].xml"), text);
  EXPECT_EQ(test::streamedTextOf(package, "[Content_Types].xml"), text);
  EXPECT_EQ(test::textOf(package, "a/b.bin"), test::randomText(5000));
  EXPECT_EQ(test::streamedTextOf(package, "a/b.bin"), test::randomText(5000));
  EXPECT_EQ(test::textOf(package, "e"), "");
  EXPECT_EQ(test::streamedTextOf(package, "e"), "");
}

TEST_F(ZipPackages, AreAcceptedByOtherPrograms) {
  test::makePackage(path(), {"a.txt", test::packableText(9000), "b/c", test::randomText(100)});

  EXPECT_EQ(python("z.testzip(), z.namelist()"), "None ['a.txt', 'b/c']\n");
  EXPECT_EQ(test::outputOf("unzip -tqq " + path().string()), "");
}

TEST_F(ZipPackages, OfNothingAreArchivesToo) {
  test::makePackage(path(), {});

  EXPECT_EQ(opened(OpenMode::Read)->itemCount(), 0u);
  EXPECT_EQ(python("z.namelist()"), "[]\n");
}

TEST_F(ZipPackages, KeepTimesAndTheExecutableBit) {
  const auto holder = opened(OpenMode::Create);
  auto& package = *holder;
  package.addItem({.name = "odd", .executable = true, .modified = 1709209831},
                  std::make_unique<TextSource>("#!/bin/sh"));
  package.addItem({.name = "old", .modified = -86399}, std::make_unique<TextSource>("1"));
  package.addItem({.name = "far", .modified = 4102444801}, std::make_unique<TextSource>("2"));
  package.addItem({.name = "now"}, std::make_unique<TextSource>("3"));
  const std::int64_t before = std::time(nullptr);
  package.close(false);

  package.open(OpenMode::Read);

  EXPECT_EQ(infoOf(package, "odd").modified, 1709209831);
  EXPECT_TRUE(infoOf(package, "odd").executable);
  EXPECT_EQ(infoOf(package, "old").modified, -86399);
  EXPECT_FALSE(infoOf(package, "old").executable);
  EXPECT_EQ(infoOf(package, "far").modified, 4102444801);
  EXPECT_NEAR(static_cast<double>(infoOf(package, "now").modified), static_cast<double>(before), 4);
  EXPECT_EQ(python("oct(z.getinfo('odd').external_attr >> 16), "
                   "oct(z.getinfo('old').external_attr >> 16), z.getinfo('odd').date_time, "
                   "z.getinfo('old').date_time"),
            "0o100755 0o100644 (2024, 2, 29, 12, 30, 30) (1980, 1, 1, 0, 0, 0)\n");
}

TEST_F(ZipPackages, KeepTimesThatThirtyTwoBitsCannotHoldInAFieldOfTheirOwn) {
  const std::vector<std::int64_t> wide{2147483648, 4102444801, 253402300799, -2147483649,
                                       -11644473599};
  const std::vector<std::int64_t> narrow{2147483647, -2147483648};
  const auto holder = opened(OpenMode::Create);
  for (const auto* times : {&wide, &narrow}) {
    for (const std::int64_t time : *times) {
      holder->addItem({.name = std::to_string(time), .modified = time},
                      std::make_unique<TextSource>("text"));
    }
  }
  holder->close(false);

  holder->open(OpenMode::Read);

  for (const auto* times : {&wide, &narrow}) {
    for (const std::int64_t time : *times) {
      EXPECT_EQ(infoOf(*holder, std::to_string(time)).modified, time);
    }
  }
  // Ticks of 100 ns since 1601, three times, as tag 1; in both headers.
  const std::string ticks =
      "__import__('struct').pack('<Q', (int(i.filename) + 11644473600) * 10**7)";
  const std::string field = "bytes.fromhex('0a0020000000000001001800') + " + ticks + " * 3";
  const std::string local =
      "(lambda d: d[30 + d[26]:30 + d[26] + d[28]])"
      "(open(z.filename, 'rb').read()[i.header_offset:])";
  EXPECT_EQ(python("[i.extra == " + local + " == " + field + " for i in z.infolist()]"),
            "[True, True, True, True, True, False, False]\n");
  EXPECT_EQ(python("[i.extra[:2].hex() for i in z.infolist()[5:]]"), "['5554', '5554']\n");
  EXPECT_EQ(test::outputOf("unzip -tqq " + path().string()), "");
}

TEST_F(ZipPackages, TellTheTimeOfTheUnixFieldBeforeThatOfTheOther) {
  // 2001-09-09 01:46:40 and a day later, in ticks.
  const std::string other =
      test::extraField(0x000A, test::le32(0) + test::le16(1) + test::le16(24) +
                                   test::le64(126445204000000000) + test::le64(1) + test::le64(2));
  const std::string own = test::extraField(0x5455, "\x01" + test::le32(1000000000));
  test::ZipBuilder builder;
  builder.add({.name = "other", .content = "1"}).add({.name = "both", .content = "2"});
  builder.items[0].central.extra = other;
  builder.items[1].central.extra = other + own;
  test::writeFile(path(), builder.build());

  const auto holder = opened(OpenMode::Read);

  EXPECT_EQ(infoOf(*holder, "other").modified, 1000046800);
  EXPECT_EQ(infoOf(*holder, "both").modified, 1000000000);
}

TEST_F(ZipPackages, WithATimestampGiveItToEveryNewItem) {
  test::makePackage(path(), {"kept", "content"});
  const std::int64_t kept = infoOf(*opened(OpenMode::Read), "kept").modified;
  const auto holder = opened(OpenMode::Modify);
  auto& package = *holder;
  WriteOptions options;
  options.timestamp = 1000000001;
  package.setWriteOptions(options);
  package.addItem({.name = "own", .modified = 5}, std::make_unique<TextSource>("1"));
  package.addItem({.name = "none"}, std::make_unique<TextSource>("2"));
  package.close(false);

  package.open(OpenMode::Read);

  EXPECT_EQ(infoOf(package, "own").modified, 1000000001);
  EXPECT_EQ(infoOf(package, "none").modified, 1000000001);
  EXPECT_EQ(infoOf(package, "kept").modified, kept);
}

TEST_F(ZipPackages, WithATimestampHaveTheSameBytesInEveryTimeZone) {
  const auto build = [&](const char* zone) {
    ::setenv("TZ", zone, 1);
    ::tzset();
    const auto holder = opened(OpenMode::Create);
    auto& package = *holder;
    WriteOptions options;
    options.timestamp = 1719792000;
    package.setWriteOptions(options);
    package.addItem({.name = "a", .modified = 5}, std::make_unique<TextSource>("1"));
    test::addText(package, {.name = "b"}, test::packableText(1000));
    package.close(false);
    package.open(OpenMode::Read);
    EXPECT_EQ(infoOf(package, "b").modified, 1719792000) << zone;
    return test::readFile(path());
  };

  const std::string utc = build("UTC");

  EXPECT_EQ(build("Asia/Kathmandu"), utc);
  EXPECT_EQ(build("America/New_York"), utc);
  ::unsetenv("TZ");
  ::tzset();
}

TEST_F(ZipPackages, PackAsTheyAreToldTo) {
  const std::string text = test::packableText(300000);
  const auto holder = opened(OpenMode::Create);
  auto& package = *holder;
  test::addText(package, {.name = "none", .compression = CompressionType::None}, text);
  test::addText(package, {.name = "fast", .compression = CompressionType::Fast}, text);
  test::addText(package, {.name = "normal"}, text);
  test::addText(package, {.name = "maximum", .compression = CompressionType::Maximum}, text);
  package.close(false);
  package.open(OpenMode::Read);

  EXPECT_FALSE(infoOf(package, "none").compressed);
  EXPECT_EQ(infoOf(package, "none").packedSize, text.size());
  EXPECT_TRUE(infoOf(package, "fast").compressed);
  EXPECT_GT(infoOf(package, "fast").packedSize, infoOf(package, "normal").packedSize);
  EXPECT_GT(infoOf(package, "normal").packedSize, infoOf(package, "maximum").packedSize);
}

TEST_F(ZipPackages, AtLevelZeroStoreNormalItems) {
  const auto holder = opened(OpenMode::Create);
  auto& package = *holder;
  WriteOptions options;
  options.level = 0;
  package.setWriteOptions(options);
  test::addText(package, {.name = "a"}, test::packableText(1000));

  package.close(false);

  package.open(OpenMode::Read);
  EXPECT_FALSE(infoOf(package, "a").compressed);
}

TEST_F(ZipPackages, LetNewItemsBeReadBeforeTheCommit) {
  const auto holder = opened(OpenMode::Create);
  auto& package = *holder;
  test::addText(package, {.name = "written"}, "through a stream");
  package.addItem({.name = "source"}, std::make_unique<TextSource>("from a source"));
  package.addItem({.name = "empty"});

  EXPECT_EQ(test::textOf(package, "written"), "through a stream");
  EXPECT_EQ(test::streamedTextOf(package, "written", 3), "through a stream");
  EXPECT_EQ(test::textOf(package, "source"), "from a source");
  EXPECT_EQ(test::streamedTextOf(package, "source", 3), "from a source");
  EXPECT_EQ(test::textOf(package, "empty"), "");
  EXPECT_EQ(infoOf(package, "written").size, 16u);
  EXPECT_EQ(infoOf(package, "written").crc, 0u);
}

TEST_F(ZipPackages, LimitWhatIsReadOfNewItemsToo) {
  const auto holder = opened(OpenMode::Create);
  auto& package = *holder;
  test::addText(package, {.name = "a"}, "12345");
  auto liar = std::make_unique<TextSource>(std::string(1000, 'x'));
  liar->declaring(3);
  package.addItem({.name = "liar"}, std::move(liar));
  ByteBuffer bytes;
  ErrorCode code{};

  package.readItem(0, bytes, 5);
  EXPECT_EQ(bytes.size(), 5u);
  EXPECT_EQ(test::errorOf([&] { package.readItem(0, bytes, 4); }, &code),
            "it has more bytes than the limit of 4");
  EXPECT_EQ(code, ErrorCode::TooLarge);
  EXPECT_NE(test::errorOf([&] { package.readItem(1, bytes, 999); }), "");
  package.readItem(1, bytes, 1000);
  EXPECT_EQ(bytes.size(), 1000u);
}

TEST_F(ZipPackages, EmptyAnItemThatIsOpenedForWritingAgain) {
  const auto holder = opened(OpenMode::Create);
  auto& package = *holder;
  const ItemIndex item = test::addText(package, {.name = "a"}, "the first text");

  const auto stream = package.openForWriting(item);
  stream->write(reinterpret_cast<const unsigned char*>("2nd"), 3);

  EXPECT_EQ(test::textOf(package, "a"), "2nd");
}

TEST_F(ZipPackages, ParkLargeNewItemsInTheTemporaryFolder) {
  const std::string text = test::packableText(20000000);
  ZipPhysicalPackage package(path().u16string(), true, (folder_ / "missing").u16string());
  package.open(OpenMode::Create);

  EXPECT_NE(test::errorOf([&] { test::addText(package, {.name = "a"}, text); }).find("missing"),
            std::string::npos);

  fs::create_directory(folder_ / "missing");
  package.removeItem(0);
  test::addText(package, {.name = "a"}, text);
  EXPECT_TRUE(test::streamedTextOf(package, "a", 100000) == text);
  package.close(false);
  package.open(OpenMode::Read);
  EXPECT_TRUE(test::streamedTextOf(package, "a", 100000) == text);
}

TEST_F(ZipPackages, KeepIndexesWhenItemsComeAndGo) {
  test::makePackage(path(), {"a", "1", "b", "2"});
  const auto holder = opened(OpenMode::Modify);
  auto& package = *holder;

  package.removeItem(0);
  const ItemIndex added = test::addText(package, {.name = "a"}, "3");
  package.removeItem(test::addText(package, {.name = "c"}, "4"));

  EXPECT_EQ(added, 2u);
  EXPECT_EQ(package.itemCount(), 4u);
  EXPECT_TRUE(package.isRemoved(0));
  EXPECT_FALSE(package.isRemoved(1));
  EXPECT_FALSE(package.isRemoved(2));
  EXPECT_TRUE(package.isRemoved(3));
  EXPECT_EQ(test::textOf(package, "a"), "3");
  EXPECT_EQ(test::textOf(package, "b"), "2");
  package.close(false);
  package.open(OpenMode::Read);
  EXPECT_EQ(package.itemCount(), 2u);
  EXPECT_EQ(test::textOf(package, "a"), "3");
}

TEST_F(ZipPackages, ListTheSameAtOnceAsOneByOne) {
  test::makePackage(path(), {"a", "1", "b", "2", "c", "3"});
  const auto holder = opened(OpenMode::Modify);
  auto& package = *holder;
  const auto listedNames = [&package](ItemIndex first) {
    std::vector<interfaces::ListedItem> items(package.itemCount() - first);
    package.listItems(first, items);
    std::string names;
    for (const interfaces::ListedItem& item : items) {
      names += item.isRemoved ? std::string_view("-") : item.name;
      EXPECT_TRUE(item.isRemoved || item.kind == interfaces::ItemKind::File);
    }
    return names;
  };

  package.removeItem(1);

  EXPECT_EQ(listedNames(0), "a-c");
  EXPECT_EQ(listedNames(1), "-c");
  test::addText(package, {.name = "d"}, "4");
  EXPECT_EQ(listedNames(0), "a-cd");
}

TEST_F(ZipPackages, KeepNamesValidWhileItemsAreAdded) {
  test::makePackage(path(), {"a", "1"});
  const auto holder = opened(OpenMode::Modify);
  auto& package = *holder;
  test::addText(package, {.name = "b"}, "2");
  const std::string_view old = package.itemInfo(0).name;
  const std::string_view added = package.itemInfo(1).name;

  for (int i = 0; i < 1000; ++i) package.addItem({.name = "n" + std::to_string(i)});

  EXPECT_EQ(old, "a");
  EXPECT_EQ(added, "b");
}

TEST_F(ZipPackages, TellFoldersLinksAndDevicesFromFiles) {
  test::ZipBuilder builder;
  const auto add = [&](const char* name, std::uint16_t host, std::uint32_t attributes) {
    test::ZipItem item{.name = name};
    item.central.madeBy = static_cast<std::uint16_t>(host << 8 | 20);
    item.central.externalAttributes = attributes;
    builder.add(item);
  };
  add("folder/", 3, 040755u << 16);
  add("dos/", 0, 0x10);
  add("file", 3, 0100644u << 16);
  add("program", 3, 0100755u << 16);
  add("modeless", 3, 0);
  add("link", 3, 0120777u << 16);
  add("device", 3, 020666u << 16);
  add("pipe", 3, 010666u << 16);
  add("label", 0, 0x08);
  add("windows", 0, 0x20);
  add("elsewhere", 7, 0120777u << 16);
  test::writeFile(path(), builder.build());

  const auto holder = opened(OpenMode::Read);
  const auto& package = *holder;

  EXPECT_EQ(infoOf(package, "folder/").kind, ItemKind::Folder);
  EXPECT_EQ(infoOf(package, "dos/").kind, ItemKind::Folder);
  EXPECT_EQ(infoOf(package, "file").kind, ItemKind::File);
  EXPECT_FALSE(infoOf(package, "file").executable);
  EXPECT_EQ(infoOf(package, "program").kind, ItemKind::File);
  EXPECT_TRUE(infoOf(package, "program").executable);
  EXPECT_EQ(infoOf(package, "modeless").kind, ItemKind::File);
  EXPECT_EQ(infoOf(package, "link").kind, ItemKind::SymbolicLink);
  EXPECT_EQ(infoOf(package, "device").kind, ItemKind::Special);
  EXPECT_EQ(infoOf(package, "pipe").kind, ItemKind::Special);
  EXPECT_EQ(infoOf(package, "label").kind, ItemKind::Special);
  EXPECT_EQ(infoOf(package, "windows").kind, ItemKind::File);
  EXPECT_EQ(infoOf(package, "elsewhere").kind, ItemKind::File);
}

TEST_F(ZipPackages, WithADosTimeOfNothingAreOf1980) {
  test::ZipBuilder builder;
  builder.add({.name = "a"});
  builder.items[0].central.dosTime = 0;
  test::writeFile(path(), builder.build());

  EXPECT_EQ(infoOf(*opened(OpenMode::Read), "a").modified, 315532800);
}

TEST_F(ZipPackages, LeaveItToTheCallerToNameAnItemThatCannotBeRead) {
  test::ZipBuilder builder;
  builder.add({.name = "bad\n", .content = "content"});
  builder.items[0].local.crc = builder.items[0].central.crc = 5;
  test::writeFile(path(), builder.build());
  const auto holder = opened(OpenMode::Read);
  auto& package = *holder;
  const std::string expected = "the checksum is wrong";
  ByteBuffer bytes;
  ErrorCode code{};

  EXPECT_EQ(test::errorOf([&] { package.readItem(0, bytes, 100); }, &code), expected);
  EXPECT_EQ(code, ErrorCode::Damaged);
  EXPECT_EQ(test::errorOf([&] { test::streamedTextOf(package, "bad\n"); }), expected);
}

TEST_F(ZipPackages, OpenForReadingHaveMoreReadersOfTheSameItems) {
  test::ZipBuilder builder;
  builder.add({.name = "good", .content = "content"});
  builder.add({.name = "bad", .content = "content"});
  builder.items[1].local.crc = builder.items[1].central.crc = 5;
  test::writeFile(path(), builder.build());
  const auto package = opened(OpenMode::Read);
  const auto one = package->makeReader();
  const auto other = package->makeReader();
  const auto textOf = [](std::span<const unsigned char> bytes) {
    return std::string(bytes.begin(), bytes.end());
  };
  ByteBuffer bytes;

  for (interfaces::IItemReader* reader : {one.get(), other.get()}) {
    reader->readItem(0, bytes, 100);
    EXPECT_EQ(textOf(bytes.bytes()), "content");
    EXPECT_EQ(textOf(reader->packedBytes(0, 3, 100)), "tent");
    EXPECT_EQ(test::errorOf([&] { reader->readItem(1, bytes, 100); }), "the checksum is wrong");
  }
  EXPECT_EQ(test::textOf(*package, "good"), "content");
}

TEST_F(ZipPackages, OpenForChangesHaveNoOtherReaders) {
  const auto created = opened(OpenMode::Create);
  EXPECT_EQ(created->makeReader(), nullptr);
  created->close(false);

  EXPECT_EQ(opened(OpenMode::Modify)->makeReader(), nullptr);
}

TEST_F(ZipPackages, TakeNamesOfAlmostSixtyFourKibibytes) {
  const std::string name(65000, 'n');
  test::makePackage(path(), {name, "content"});

  const auto holder = opened(OpenMode::Read);
  auto& package = *holder;

  EXPECT_EQ(test::textOf(package, name), "content");
  EXPECT_EQ(python("z.testzip()"), "None\n");
}

TEST_F(ZipPackages, HoldMoreItemsThanSixteenBitsCount) {
  constexpr int kCount = 70000;
  const auto holder = opened(OpenMode::Create);
  auto& package = *holder;
  for (int i = 0; i < kCount; ++i) package.addItem({.name = "folder/item" + std::to_string(i)});
  test::addText(package, {.name = "last"}, "content");
  package.close(false);

  package.open(OpenMode::Read);
  EXPECT_EQ(package.itemCount(), kCount + 1u);
  EXPECT_EQ(test::textOf(package, "last"), "content");
  EXPECT_EQ(python("z.testzip(), len(z.namelist())"), "None 70001\n");
  package.close(true);
  package.open(OpenMode::Modify);
  package.removeItem(kCount / 2);
  package.close(false);
  package.open(OpenMode::Read);
  EXPECT_EQ(package.itemCount(), kCount + 0u);
  EXPECT_EQ(test::textOf(package, "last"), "content");
}

TEST_F(ZipPackages, OfOtherProgramsAreReadAndChanged) {
  ASSERT_EQ(
      test::outputOf("/usr/bin/python3 -c \"import zipfile\n"
                     "z = zipfile.ZipFile('" +
                     path().string() +
                     "', 'w', 8)\n"
                     "z.writestr('a.txt', 'alpha' * 1000)\n"
                     "z.writestr('gr\u00fcn/b.txt', 'beta')\n"
                     "with z.open('wide', 'w', force_zip64=True) as f: f.write(b'gamma' * 9)\n"
                     "z.comment = b'note'\nz.close()\""),
      "");
  const auto holder = opened(OpenMode::Modify);
  auto& package = *holder;
  EXPECT_EQ(test::textOf(package, "gr\u00fcn/b.txt"), "beta");
  EXPECT_EQ(test::textOf(package, "wide").size(), 45u);
  package.removeItem(test::find(package, "a.txt").value());
  test::addText(package, {.name = "new"}, "delta");

  package.close(false);

  EXPECT_EQ(python("z.testzip(), z.namelist()[0].encode(), z.namelist()[1:], z.comment"),
            "None b'gr\\xc3\\xbcn/b.txt' ['wide', 'new'] b'note'\n");
}

TEST_F(ZipPackages, ReplaceAnExistingFileOnlyIfAllowed) {
  test::writeFile(path(), "old");
  auto package = test::packageAt(path(), false);
  EXPECT_NE(test::errorOf([&] { package.open(OpenMode::Create); }), "");

  package.setReplaceExisting(true);
  package.open(OpenMode::Create);
  test::addText(package, {.name = "a"}, "1");
  package.close(false);

  package.open(OpenMode::Read);
  EXPECT_EQ(test::textOf(package, "a"), "1");
}

}  // namespace
}  // namespace opc::zippackage
