// SPDX-License-Identifier: MIT
#include "opc/zippackage/ExtraFields.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "tests/support/ZipBuilder.h"

namespace opc::zippackage {
namespace {

using test::extraField;
using test::le32;
using test::le64;

Bytes bytesOf(const std::string& text) {
  return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

std::string encoded(const Zip64Extra& extra) {
  std::string bytes(Zip64Extra::kMaxSize, '\0');
  bytes.resize(extra.encode(reinterpret_cast<unsigned char*>(bytes.data())));
  return bytes;
}

TEST(ExtraFieldWalk, VisitsEveryFieldInOrder) {
  const std::string extra = extraField(0x5455, "12345") + extraField(7, "") + extraField(1, "ab");
  ExtraFieldWalk walk(bytesOf(extra));

  ASSERT_TRUE(walk.next());
  EXPECT_EQ(walk.id(), 0x5455);
  EXPECT_EQ(walk.data().size(), 5u);
  ASSERT_TRUE(walk.next());
  EXPECT_EQ(walk.id(), 7);
  EXPECT_TRUE(walk.data().empty());
  ASSERT_TRUE(walk.next());
  EXPECT_EQ(walk.data()[1], 'b');
  EXPECT_FALSE(walk.next());
  EXPECT_FALSE(walk.isMalformed());
}

TEST(ExtraFieldWalk, AFieldThatIsCutOffEndsTheWalk) {
  for (const std::string& rest :
       {extraField(9, "abcd").substr(0, 7), std::string("\x01\x00\x01", 3)}) {
    const std::string extra = extraField(7, "x") + rest;
    ExtraFieldWalk walk(bytesOf(extra));

    EXPECT_TRUE(walk.next());
    EXPECT_FALSE(walk.next());
    EXPECT_TRUE(walk.isMalformed());
  }
}

TEST(ExtraFieldWalk, ReportsWhatIsWrongWithTheFields) {
  const auto faultOf = [](const std::string& extra) {
    return ExtraFieldWalk::faultOf(bytesOf(extra));
  };
  const std::string wide = extraField(1, le64(5));

  EXPECT_EQ(faultOf(""), ExtraFault::None);
  EXPECT_EQ(faultOf(wide + extraField(7, "x") + extraField(7, "x")), ExtraFault::None);
  EXPECT_EQ(faultOf("xyz"), ExtraFault::Cut);
  EXPECT_EQ(faultOf(wide + extraField(7, "xyz").substr(0, 6)), ExtraFault::Cut);
  EXPECT_EQ(faultOf(wide + extraField(7, "x") + wide), ExtraFault::Zip64Twice);
  EXPECT_EQ(faultOf(wide + extraField(1, "")), ExtraFault::Zip64Twice);
}

TEST(Zip64Extra, HoldsJustTheValuesThatAreSet) {
  Zip64Extra extra;
  EXPECT_EQ(encoded(extra), "");

  extra.packedSize = 0x123456789A;
  EXPECT_EQ(encoded(extra), extraField(1, le64(0x123456789A)));

  extra.size = 5;
  extra.headerOffset = 6;
  extra.disk = 7;
  EXPECT_EQ(encoded(extra), extraField(1, le64(5) + le64(0x123456789A) + le64(6) + le32(7)));
}

TEST(Zip64Extra, ReadsTheValuesThatAreAskedForInTheirOrder) {
  const std::string data = le64(0x1111111111) + le64(0x2222222222) + le32(3);
  Zip64Extra extra;
  extra.packedSize = 0;
  extra.headerOffset = 0;
  extra.disk = 0;

  ASSERT_TRUE(extra.decode(bytesOf(data)));

  EXPECT_FALSE(extra.size);
  EXPECT_EQ(extra.packedSize, 0x1111111111u);
  EXPECT_EQ(extra.headerOffset, 0x2222222222u);
  EXPECT_EQ(extra.disk, 3u);
}

TEST(Zip64Extra, WithTooFewValuesIsNotRead) {
  Zip64Extra extra;
  extra.size = 0;
  extra.packedSize = 0;

  EXPECT_FALSE(extra.decode(bytesOf(le64(1) + le32(2))));
}

TEST(Zip64Extra, AgreesWithAFieldThatHoldsOnlyItsFirstValues) {
  const Zip64Extra one{.size = 5};
  const Zip64Extra two{.size = 5, .packedSize = 6};
  const Zip64Extra needed{.size = 0, .packedSize = 0, .headerOffset = 0};

  EXPECT_TRUE(one.agrees(bytesOf(le64(5)), needed));
  EXPECT_FALSE(one.agrees(bytesOf(le64(6)), needed));
  EXPECT_FALSE(one.agrees(bytesOf(le64(5) + le64(0)), needed));
  EXPECT_TRUE(two.agrees(bytesOf(le64(5) + le64(6)), needed));
  EXPECT_FALSE(two.agrees(bytesOf(le64(5) + le64(0)), needed));
  EXPECT_FALSE(two.agrees(bytesOf(le64(5) + le32(6)), needed));
}

TEST(TimestampExtra, KeepsTimesBefore1970) {
  std::string bytes(TimestampExtra::kSize, '\0');
  TimestampExtra{-5}.encode(reinterpret_cast<unsigned char*>(bytes.data()));

  EXPECT_EQ(bytes, extraField(0x5455, "\x01" + le32(0xFFFFFFFB)));
  EXPECT_EQ(TimestampExtra::decode(bytesOf(bytes.substr(4)))->modified, -5);
}

TEST(TimestampExtra, WithoutTheTimeOfChangeIsNone) {
  EXPECT_FALSE(TimestampExtra::decode(bytesOf("\x02" + le32(1))));
  EXPECT_FALSE(TimestampExtra::decode(bytesOf("\x01" + std::string("abc"))));
  EXPECT_FALSE(TimestampExtra::decode({}));
}

std::string ticksField(std::uint64_t ticks) {
  return le32(0) + extraField(1, le64(ticks) + le64(ticks) + le64(ticks));
}

TEST(NtfsTimeExtra, CountsTicksSince1601) {
  std::string bytes(NtfsTimeExtra::kSize, '\0');
  NtfsTimeExtra{4102444801}.encode(reinterpret_cast<unsigned char*>(bytes.data()));

  EXPECT_EQ(bytes, extraField(0x000A, ticksField(157469184010000000)));
  EXPECT_EQ(NtfsTimeExtra::decode(bytesOf(bytes.substr(4)))->modified, 4102444801);
}

TEST(NtfsTimeExtra, FindsTheTimesBehindOtherAttributes) {
  const std::string data = le32(7) + extraField(2, "xyz") + ticksField(10000001).substr(4);

  EXPECT_EQ(NtfsTimeExtra::decode(bytesOf(data))->modified, -11644473599);
}

TEST(NtfsTimeExtra, WithoutATimeOfChangeIsNone) {
  for (const std::string& data :
       {std::string(), std::string("abc"), le32(0), le32(0) + extraField(2, le64(5)),
        le32(0) + extraField(1, "1234567"), ticksField(5).substr(0, 20), ticksField(0),
        ticksField(UINT64_MAX)}) {
    EXPECT_FALSE(NtfsTimeExtra::decode(bytesOf(data)));
  }
}

TEST(NtfsTimeExtra, HoldsTimesFrom1601On) {
  EXPECT_FALSE(NtfsTimeExtra::holds(-11644473600));
  EXPECT_TRUE(NtfsTimeExtra::holds(-11644473599));
  EXPECT_TRUE(NtfsTimeExtra::holds(910692730085));
  EXPECT_FALSE(NtfsTimeExtra::holds(910692730086));
  EXPECT_FALSE(NtfsTimeExtra::holds(std::numeric_limits<std::int64_t>::min()));
}

}  // namespace
}  // namespace opc::zippackage
