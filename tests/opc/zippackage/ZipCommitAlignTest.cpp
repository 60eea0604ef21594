// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "opc/zippackage/ExtraFields.h"
#include "opc/zippackage/PackageFile.h"
#include "opc/zippackage/ZipDirectory.h"
#include "opc/zippackage/ZipItemReader.h"
#include "opc/zippackage/ZipPhysicalPackage.h"
#include "tests/opc/zippackage/CommitsFixture.h"
#include "tests/opc/zippackage/PackageFixture.h"
#include "tests/support/ZipBuilder.h"

namespace opc::zippackage {
namespace {

using interfaces::OpenMode;

constexpr std::size_t kBlock = 4096;
constexpr std::uint16_t kHint = 0xA220;

/// Where the data of an item lie, and the extra fields in front of them.
struct Place {
  std::uint64_t data = 0;
  std::string extra;
};

class AlignedCommits : public Commits {
 protected:
  AlignedCommits() : large_(test::randomText(std::size_t{9} << 20)) {}

  Place placeOf(std::string_view name) const {
    const PackageFile file(path());
    const ZipDirectory directory = ZipDirectory::read(file);
    ZipItemReader reader(file, directory);
    for (std::size_t entry = 0; entry < directory.entries().size(); ++entry) {
      if (directory.name(entry) != name) continue;
      const LocalHeader header = reader.localHeader(entry);
      const Bytes extra = reader.localExtra(entry);
      return {directory.entries()[entry].headerOffset + LocalHeader::kSize + header.nameLength +
                  header.extraLength,
              std::string(extra.begin(), extra.end())};
    }
    return {};
  }

  static std::size_t hintsIn(const std::string& extra) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(extra.data());
    std::size_t count = 0;
    for (ExtraFieldWalk walk({bytes, extra.size()}); walk.next();) count += walk.id() == kHint;
    return count;
  }

  void writePackage(const std::function<void(test::ZipItem&)>& change = [](test::ZipItem&) {}) {
    test::ZipBuilder builder;
    builder.add({.name = "first", .content = "1"});
    test::ZipItem item{.name = "large", .content = large_};
    change(item);
    builder.add(item).add({.name = "next", .content = "2"});
    builder.add({.name = "last", .content = large_});
    test::writeFile(path(), builder.build());
  }

  void remove(std::string_view name) {
    auto package = test::packageAt(path());
    package.open(OpenMode::Modify);
    package.removeItem(test::find(package, name).value());
    package.close(false);
  }

  void expectContents() {
    auto package = test::packageAt(path());
    package.open(OpenMode::Read);
    EXPECT_TRUE(test::textOf(package, "large") == large_);
    EXPECT_TRUE(test::textOf(package, "last") == large_);
  }

  std::string large_;
};

TEST_F(AlignedCommits, KeepThePlaceOfALongRunWithinABlock) {
  writePackage();
  const Place large = placeOf("large");
  const Place last = placeOf("last");

  remove("first");

  EXPECT_EQ(placeOf("large").data % kBlock, large.data % kBlock);
  EXPECT_EQ(placeOf("last").data % kBlock, last.data % kBlock);
  EXPECT_EQ(hintsIn(placeOf("large").extra), 1u);
  EXPECT_EQ(hintsIn(placeOf("last").extra), 0u);
  expectContents();
  EXPECT_EQ(test::outputOf("unzip -tqq " + path().string()), "");
}

TEST_F(AlignedCommits, AlignEachRun) {
  writePackage();
  const Place last = placeOf("last");

  remove("next");

  EXPECT_EQ(placeOf("last").data % kBlock, last.data % kBlock);
  EXPECT_EQ(hintsIn(placeOf("large").extra), 0u);
  EXPECT_EQ(hintsIn(placeOf("last").extra), 1u);
  expectContents();
}

TEST_F(AlignedCommits, ReplaceTheHintOfAnEarlierOne) {
  writePackage([](test::ZipItem& item) {
    item.local.extra = test::extraField(7, "other") + test::extraField(kHint, "growth hint");
  });
  const Place large = placeOf("large");

  remove("first");
  changed()->close(false);

  const Place now = placeOf("large");
  EXPECT_EQ(now.data % kBlock, large.data % kBlock);
  EXPECT_EQ(hintsIn(now.extra), 1u);
  EXPECT_EQ(now.extra.substr(0, 9), test::extraField(7, "other"));
  EXPECT_LT(now.extra.size(), 9 + kBlock + 8);
  expectContents();
}

TEST_F(AlignedCommits, LeaveAMalformedHeaderUnchanged) {
  writePackage([](test::ZipItem& item) { item.local.extra = "malformed"; });

  remove("first");

  EXPECT_EQ(placeOf("large").extra, "malformed");
  expectContents();
}

TEST_F(AlignedCommits, ChangeNoHeaderWithoutRoomForAHint) {
  const std::string full = test::extraField(7, std::string(0xFFFF - 4, 'x'));
  writePackage([&](test::ZipItem& item) { item.local.extra = full; });

  remove("first");

  EXPECT_TRUE(placeOf("large").extra == full);
  expectContents();
}

TEST_F(AlignedCommits, LeaveTheBytesOfShortRunsAsTheyAre) {
  changed()->close(false);
  const Place before = placeOf("b.txt");

  remove("a.txt");

  EXPECT_EQ(placeOf("b.txt").extra, before.extra);
}

TEST_F(AlignedCommits, KeepTheBytesOfShortRuns) {
  writePackage();
  remove("last");

  remove("large");

  EXPECT_EQ(placeOf("next").extra, "");
}

}  // namespace
}  // namespace opc::zippackage
