// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "opc/zippackage/PackageFile.h"
#include "opc/zippackage/ZipDirectory.h"
#include "opc/zippackage/ZipPhysicalPackage.h"
#include "tests/opc/zippackage/PackageFixture.h"
#include "tests/opc/zippackage/ZipPackagesFixture.h"
#include "tests/support/Threads.h"

namespace opc::zippackage {
namespace {

using interfaces::NewItem;
using interfaces::OpenMode;
using interfaces::PackedContent;
using interfaces::PackedContents;

constexpr std::size_t kLarge = std::size_t{17} << 20;  // more than is packed in memory

bool beginsWithX(Bytes content) {
  return !content.empty() && content.front() == 'x';
}

class Packed : public ZipPackages, public testing::WithParamInterface<test::Starter> {
 protected:
  /// By item of the directory: its name, and what the test returned if its content is known.
  using Known = std::vector<std::pair<std::string, std::optional<bool>>>;

  /// Opens the package, adds these items, and commits.
  Known commit(OpenMode mode, const std::vector<std::pair<NewItem, std::string>>& items) {
    PackedContents packed(beginsWithX);
    const auto package = opened(mode);
    for (const auto& [item, content] : items) test::addText(*package, item, content);
    Known known;
    WriteOptions options;
    options.background = GetParam().starter;
    options.packed = &packed;
    options.inspect = [&](const std::string& path) {
      const PackageFile file(path);
      const ZipDirectory directory = ZipDirectory::read(file);
      for (std::size_t i = 0; i < directory.entries().size(); ++i) {
        known.emplace_back(directory.name(i), std::nullopt);
        const ZipEntry& item = directory.entries()[i];
        const PackedContent content{item.size, item.packedSize, item.crc, item.method};
        if (packed.has(i, content)) known.back().second = packed.hasPassed(i);
      }
    };
    package->setWriteOptions(options);
    package->close(false);
    return known;
  }
};

TEST_P(Packed, ContentsAreKnownByTheirItems) {
  const Known known = commit(OpenMode::Create,
                             {{{.name = "a"}, "content"},
                              {{.name = "b"}, "x content"},
                              {{.name = "front", .atFront = true}, "x" + test::packableText(70000)},
                              {{.name = "empty"}, ""}});

  EXPECT_EQ(known, (Known{{"front", true}, {"a", false}, {"b", true}, {"empty", false}}));
}

TEST_P(Packed, ContentsThatRepeatOthersAreKnownToo) {
  const std::string text = "x" + test::packableText(70000);
  std::string other = text;
  other.front() = 'y';

  const Known known = commit(OpenMode::Create, {{{.name = "1"}, text},
                                                {{.name = "2"}, other},
                                                {{.name = "3"}, text},
                                                {{.name = "4"}, other}});

  EXPECT_EQ(known, (Known{{"1", true}, {"2", false}, {"3", true}, {"4", false}}));
}

TEST_P(Packed, ContentsThatAreLargeOrCopiedAreNotKnown) {
  commit(OpenMode::Create, {{{.name = "old"}, "x"}});

  const Known known = commit(OpenMode::Modify, {{{.name = "large"}, std::string(kLarge, 'x')},
                                                {{.name = "again"}, std::string(kLarge, 'x')},
                                                {{.name = "new"}, "x"}});

  EXPECT_EQ(
      known,
      (Known{
          {"old", std::nullopt}, {"large", std::nullopt}, {"again", std::nullopt}, {"new", true}}));
}

INSTANTIATE_TEST_SUITE_P(, Packed, testing::ValuesIn(test::starters()),
                         [](const auto& test) { return test.param.name; });

TEST(PackedContents, AreOnlyThoseThatWerePacked) {
  const PackedContent content{.size = 5, .packedSize = 4, .crc = 3, .method = 8};
  PackedContents packed(beginsWithX);
  packed.add(1, content, true);
  std::vector<PackedContent> others(4, content);
  ++others[0].size;
  ++others[1].packedSize;
  ++others[2].crc;
  ++others[3].method;

  EXPECT_TRUE(packed.has(1, content));
  EXPECT_FALSE(packed.has(0, content));
  EXPECT_FALSE(packed.has(2, content));
  for (const PackedContent& other : others) EXPECT_FALSE(packed.has(1, other));
}

}  // namespace
}  // namespace opc::zippackage
