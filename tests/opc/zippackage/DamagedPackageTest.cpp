// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <string>

#include "opc/interfaces/IPhysicalPackage.h"
#include "tests/opc/zippackage/PackageFixture.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/ZipBuilder.h"

namespace opc::zippackage {
namespace {

using interfaces::ItemIndex;
using interfaces::OpenMode;
using test::ZipBuilder;

/// A package with something of everything: methods, descriptors, ZIP64, folders, comments.
std::string sample() {
  ZipBuilder builder;
  builder.add({.name = "[Content_Types].xml", .content = test::packableText(300), .deflate = true});
  builder.add({.name = "stored.txt", .content = "stored text"});
  builder.add({.name = "folder/"});
  test::ZipItem described{
      .name = "folder/d.txt", .content = test::packableText(200), .deflate = true};
  described.descriptor = true;
  described.comment = "item comment";
  described.central.extra = test::extraField(0x5455, "\x01" + test::le32(1700000000));
  builder.add(described);
  test::ZipItem wide{.name = "gr\x81n.txt", .content = "wide"};
  wide.local.size = wide.local.packedSize = 0xFFFFFFFF;
  wide.local.extra = test::extraField(1, test::le64(4) + test::le64(4));
  wide.central.size = 0xFFFFFFFF;
  wide.central.extra = test::extraField(1, test::le64(4));
  builder.add(wide);
  builder.zip64 = true;
  builder.comment = "archive comment";
  return builder.build();
}

/// A fresh file each time: cutting an old one to nothing makes some file systems flush it.
void writeFresh(const std::filesystem::path& path, const std::string& bytes) {
  std::filesystem::remove(path);
  test::writeFile(path, bytes);
}

struct Outcome {
  bool opened = false;
  std::size_t readable = 0;
};

/// Opens and reads everything. Only the library's exceptions count as an answer.
Outcome tryAll(const std::filesystem::path& path) {
  Outcome outcome;
  auto package = test::packageAt(path);
  try {
    package.open(OpenMode::Read);
  } catch (const Exception&) {
    return outcome;
  }
  outcome.opened = true;
  ByteBuffer bytes;
  for (ItemIndex item = 0; item < package.itemCount(); ++item) {
    try {
      EXPECT_EQ(package.itemInfo(item).name.find('\0'), std::string_view::npos);
      package.readItem(item, bytes, 100000);
      ++outcome.readable;
    } catch (const Exception&) {
      continue;
    }
  }
  return outcome;
}

TEST(DamagedPackage, TheSampleIsWholeToBeginWith) {
  const test::TemporaryFolder folder;
  writeFresh(folder / "p.zip", sample());

  const Outcome outcome = tryAll(folder / "p.zip");

  EXPECT_TRUE(outcome.opened);
  EXPECT_EQ(outcome.readable, 5u);
}

TEST(DamagedPackage, CutAnywhereItIsRefused) {
  const test::TemporaryFolder folder;
  const std::string bytes = sample();
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    writeFresh(folder / "p.zip", bytes.substr(0, size));

    EXPECT_FALSE(tryAll(folder / "p.zip").opened) << size;
  }
}

TEST(DamagedPackage, WithAnyByteChangedItIsAnsweredInOrder) {
  const test::TemporaryFolder folder;
  const std::string bytes = sample();
  std::size_t refused = 0;
  std::size_t damaged = 0;
  for (std::size_t at = 0; at < bytes.size(); ++at) {
    for (const int flip : {0x01, 0x80, 0xFF}) {
      std::string changed = bytes;
      changed[at] = static_cast<char>(changed[at] ^ flip);
      writeFresh(folder / "p.zip", changed);

      const Outcome outcome = tryAll(folder / "p.zip");

      refused += !outcome.opened;
      damaged += outcome.opened && outcome.readable < 5;
    }
  }
  EXPECT_GT(refused, 300u);
  EXPECT_GT(damaged, 300u);
}

TEST(DamagedPackage, WithAnyByteChangedItIsCommittedOrRefused) {
  const test::TemporaryFolder folder;
  const std::string bytes = sample();
  for (std::size_t at = 0; at < bytes.size(); at += 3) {
    std::string changed = bytes;
    changed[at] = static_cast<char>(changed[at] ^ 0xFF);
    writeFresh(folder / "p.zip", changed);
    auto package = test::packageAt(folder / "p.zip");
    try {
      package.open(OpenMode::Modify);
      test::addText(package, {.name = "new.txt"}, "new");
      if (package.itemCount() > 1) package.removeItem(0);
      package.close(false);
    } catch (const Exception&) {
      EXPECT_EQ(test::readFile(folder / "p.zip"), changed) << at;
      continue;
    }
    package.open(OpenMode::Read);
    EXPECT_EQ(test::textOf(package, "new.txt"), "new") << at;
  }
}

}  // namespace
}  // namespace opc::zippackage
