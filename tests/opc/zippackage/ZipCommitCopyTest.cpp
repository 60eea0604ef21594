// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/ZipCommit.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>

#include "opc/zippackage/ZipPhysicalPackage.h"
#include "tests/opc/zippackage/CommitsFixture.h"
#include "tests/opc/zippackage/PackageFixture.h"
#include "tests/support/ZipBuilder.h"

namespace opc::zippackage {
namespace {

namespace fs = std::filesystem;
using interfaces::OpenMode;
using test::TextSource;

TEST_F(Commits, CopyUnchangedItemsByteForByte) {
  test::ZipBuilder builder;
  test::ZipItem odd{.name = "odd.txt", .content = test::packableText(4000), .deflate = true};
  odd.descriptor = true;
  odd.local.extra = test::extraField(0xA220, "growth hint");
  odd.local.dosTime = 12345;
  builder.add({.name = "first", .content = "1"}).add(odd).add({.name = "last", .content = "3"});
  builder.comment = "the comment";
  const std::string before = builder.build();
  const std::size_t directory = before.find("PK\x01\x02");
  test::writeFile(path(), before);

  changed()->close(false);

  EXPECT_EQ(bytes().substr(0, directory), before.substr(0, directory));
  EXPECT_EQ(bytes().substr(bytes().size() - 11), "the comment");
  EXPECT_NE(bytes().find(before.substr(directory, before.find("PK\x05\x06") - directory)),
            std::string::npos);
}

TEST_F(Commits, CopyAnUnreadableItemUnchanged) {
  const std::string large = test::randomText(100000);
  test::ZipBuilder builder;
  test::ZipItem damaged{.name = "a", .content = "A"};
  damaged.local.name = "b";
  builder.add({.name = "first", .content = large}).add(damaged);
  builder.add({.name = "last", .content = large});
  const std::string before = builder.build();
  test::writeFile(path(), before);

  changed()->close(false);

  const std::size_t directory = before.find("PK\x01\x02");
  EXPECT_TRUE(bytes().substr(0, directory) == before.substr(0, directory));
  auto package = test::packageAt(path());
  package.open(OpenMode::Read);
  EXPECT_EQ(test::ruleOf([&] { test::textOf(package, "a"); }), "ZP-7");
  EXPECT_EQ(test::textOf(package, "new.txt"), "new content");
}

TEST_F(Commits, LeaveOutTheBytesOfRemovedItemsOnly) {
  test::ZipBuilder builder;
  for (const char* name : {"a", "b", "c", "d", "e"}) {
    test::ZipItem item{.name = name, .content = test::randomText(400000, unsigned(name[0]))};
    item.descriptor = name[0] == 'c';
    builder.add(item);
  }
  test::writeFile(path(), builder.build());
  auto package = test::packageAt(path());
  package.open(OpenMode::Modify);
  package.removeItem(test::find(package, "b").value());
  package.removeItem(test::find(package, "e").value());

  package.close(false);

  test::ZipBuilder expected;
  expected.add(builder.items[0]).add(builder.items[2]).add(builder.items[3]);
  EXPECT_TRUE(bytes() == expected.build());
}

TEST_F(Commits, FindTheEndOfAnItemBeforeAHugeGap) {
  test::ZipBuilder builder;
  test::ZipItem first{.name = "a", .content = "first"};
  first.descriptor = true;
  first.local.extra = test::extraField(7, "local only");
  test::ZipItem second{.name = "b", .content = "second"};
  second.before = std::string(200000, 'g');
  builder.add(first).add(second).add({.name = "c", .content = "third"});
  test::writeFile(path(), builder.build());
  auto package = test::packageAt(path());
  package.open(OpenMode::Modify);
  package.removeItem(2);

  package.close(false);

  builder.items[1].before.clear();
  builder.items.pop_back();
  EXPECT_EQ(bytes(), builder.build());
}

/// Items of these names (a letter each) lie whole in the extra fields of the local header of "a",
/// whose data follow them.
std::string itemsWithinAnother(const std::string& names) {
  constexpr std::size_t kHeader = 30 + 1;
  test::ZipBuilder within;
  for (const char name : names) within.add({.name = {name}, .content = "BBBB"});
  test::ZipItem outer{.name = "a", .content = "AAAA"};
  outer.local.extra = test::extraField(
      0x9999, std::string(8, 'x') + within.build().substr(0, names.size() * (kHeader + 4)));
  test::ZipBuilder builder;
  builder.add({.name = "c", .content = "CCCC"}).add(outer);
  std::size_t offset = kHeader + 4 + kHeader + 4 + 8;
  for (const char name : names) {
    test::ZipItem inner{.name = {name}, .content = "BBBB"};
    inner.writeLocal = false;
    inner.central.offset = static_cast<std::uint32_t>(offset);
    builder.add(inner);
    offset += kHeader + 4;
  }
  return builder.build();
}

TEST_F(Commits, RefuseToCutAnItemThatReachesOverTheNextOne) {
  test::writeFile(path(), itemsWithinAnother("b"));
  auto package = test::packageAt(path());
  package.open(OpenMode::Modify);
  ASSERT_EQ(test::textOf(package, "b"), "BBBB");
  package.removeItem(test::find(package, "b").value());

  EXPECT_EQ(test::ruleOf([&] { package.close(false); }), "RB-2");
  EXPECT_EQ(failureOf(package), "cannot write package '" + path().string() +
                                    "': cannot keep item 'a': its data reach into item 'b'");
}

TEST_F(Commits, RefuseToCutAnItemThatReachesOverTheLastOne) {
  const std::string before = itemsWithinAnother("b");
  test::writeFile(path(), before);
  auto package = test::packageAt(path());
  package.open(OpenMode::Modify);
  test::addText(package, {.name = "new"}, "new");

  EXPECT_EQ(failureOf(package), "cannot write package '" + path().string() +
                                    "': cannot keep item 'a': its data reach into item 'b'");
  EXPECT_EQ(bytes(), before);
}

TEST_F(Commits, RefuseToCutAnItemThatReachesFarOverOthers) {
  // Two items within the first one's local extra field, of which the second stays as well.
  test::writeFile(path(), itemsWithinAnother("bd"));
  auto package = test::packageAt(path());
  package.open(OpenMode::Modify);
  package.removeItem(test::find(package, "c").value());

  EXPECT_EQ(test::ruleOf([&] { package.close(false); }), "RB-2");
}

TEST_F(Commits, LeaveOutBytesThatDoNotBelongToTheLastItem) {
  test::ZipBuilder builder;
  builder.add({.name = "a", .content = "A"});
  builder.add({.name = "b", .before = "junk", .writeCentral = false});
  test::writeFile(path(), builder.build());
  const auto holder = changed();

  holder->close(false);

  EXPECT_EQ(bytes().find("junk"), std::string::npos);
  EXPECT_EQ(test::outputOf("unzip -tqq " + path().string()), "");
}

TEST_F(Commits, OfItemsInAnyOrderKeepTheirContent) {
  test::ZipBuilder builder;
  builder.add({.name = "a", .content = "11"}).add({.name = "b", .content = "22"});
  builder.add({.name = "c", .content = "33"});
  builder.items[0].central.offset = 66;
  builder.items[2].central.offset = 0;
  builder.items[0].local.name = "c";
  builder.items[2].local.name = "a";
  std::swap(builder.items[0].content, builder.items[2].content);
  builder.items[0].central.crc = test::crcOf("11");
  builder.items[2].central.crc = test::crcOf("33");
  test::writeFile(path(), builder.build());
  auto package = test::packageAt(path());
  package.open(OpenMode::Modify);
  ASSERT_EQ(test::textOf(package, "a"), "11");
  package.removeItem(test::find(package, "b").value());

  package.close(false);

  package.open(OpenMode::Read);
  EXPECT_EQ(test::textOf(package, "a"), "11");
  EXPECT_EQ(test::textOf(package, "c"), "33");
}

TEST_F(Commits, PutItemsForTheFrontBeforeEverythingElse) {
  auto package = test::packageAt(path());
  package.open(OpenMode::Modify);
  test::addText(package, {.name = "back"}, "1");
  test::addText(package, {.name = "[Content_Types].xml", .atFront = true}, "2");
  test::addText(package, {.name = "_rels/.rels", .atFront = true}, "3");

  package.close(false);

  EXPECT_EQ(test::outputOf("unzip -Z1 " + path().string()),
            "[Content_Types].xml\n_rels/.rels\na.txt\nb.txt\nback\n");
}

TEST_F(Commits, LeaveBehindAForeignBeginningAndTrailingBytes) {
  const std::string plain = bytes();
  test::ZipBuilder builder;
  builder.prefix = "#!/bin/sh\n";
  builder.suffix = "\n\n";
  builder.add({.name = "a", .content = "1"});
  test::writeFile(path(), builder.build());

  changed()->close(false);

  EXPECT_EQ(bytes().substr(0, 4), "PK\x03\x04");
  EXPECT_EQ(test::outputOf("unzip -tqq " + path().string()), "");
}

TEST_F(Commits, MoveItemsBackFromBeyondFourGibibytes) {
  test::ZipBuilder builder;
  builder.zip64 = true;
  builder.add({.name = "far", .content = "far away"});
  const std::uint64_t hole = std::uint64_t{5} << 30;
  builder.items[0].central.offset = 0xFFFFFFFF;
  builder.items[0].central.extra = test::extraField(1, test::le64(hole));
  const std::string plain = builder.build();
  builder.directoryOffset = hole + plain.find("PK\x01\x02");
  builder.zip64Offset = hole + plain.find("PK\x06\x06");
  fs::remove(path());
  test::writeFile(path(), "");
  fs::resize_file(path(), hole);
  std::ofstream(path(), std::ios::binary | std::ios::app) << builder.build();
  auto package = test::packageAt(path());
  package.open(OpenMode::Read);
  EXPECT_EQ(test::textOf(package, "far"), "far away");
  package.close(true);

  changed()->close(false);

  EXPECT_LT(fs::file_size(path()), 1000u);
  package.open(OpenMode::Read);
  EXPECT_EQ(test::textOf(package, "far"), "far away");
  EXPECT_EQ(test::outputOf("unzip -tqq " + path().string()), "");
}

}  // namespace
}  // namespace opc::zippackage
