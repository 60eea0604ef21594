// SPDX-License-Identifier: MIT
#include "opc/zippackage/ZipPhysicalPackage.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
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
using interfaces::ItemKind;
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

TEST_F(ZipPackages, WithoutItemsAreArchivesToo) {
  test::makePackage(path(), {});

  EXPECT_EQ(opened(OpenMode::Read)->itemCount(), 0u);
  EXPECT_EQ(python("z.namelist()"), "[]\n");
}

TEST_F(ZipPackages, UseTheCompressionThatIsAskedFor) {
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

TEST_F(ZipPackages, DistinguishFoldersLinksAndDevicesFromFiles) {
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
