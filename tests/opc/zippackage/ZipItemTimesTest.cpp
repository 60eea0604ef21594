// SPDX-License-Identifier: MIT
// The times that ZipPhysicalPackage gives items, and reads.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include "tests/opc/zippackage/PackageFixture.h"
#include "tests/opc/zippackage/ZipPackagesFixture.h"
#include "tests/support/ZipBuilder.h"

namespace opc::zippackage {
namespace {

using interfaces::OpenMode;
using test::TextSource;

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

TEST_F(ZipPackages, PreferTheTimeOfTheUnixField) {
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

TEST_F(ZipPackages, WithADosTimeOfZeroAreFrom1980) {
  test::ZipBuilder builder;
  builder.add({.name = "a"});
  builder.items[0].central.dosTime = 0;
  test::writeFile(path(), builder.build());

  EXPECT_EQ(infoOf(*opened(OpenMode::Read), "a").modified, 315532800);
}

}  // namespace
}  // namespace opc::zippackage
