// SPDX-License-Identifier: MIT
#include "opc/ByteCount.h"

#include <gtest/gtest.h>

namespace {

TEST(ByteCount, IsShownShort) {
  EXPECT_EQ(opc::describeBytes(0), "0 B");
  EXPECT_EQ(opc::describeBytes(999), "999 B");
  EXPECT_EQ(opc::describeBytes(1000), "1.0 kB");
  EXPECT_EQ(opc::describeBytes(1949), "1.9 kB");
  EXPECT_EQ(opc::describeBytes(9949), "9.9 kB");
  EXPECT_EQ(opc::describeBytes(9950), "10 kB");
  EXPECT_EQ(opc::describeBytes(12345), "12 kB");
  EXPECT_EQ(opc::describeBytes(999499), "999 kB");
  EXPECT_EQ(opc::describeBytes(999999), "1.0 MB");
  EXPECT_EQ(opc::describeBytes(4'000'000'000'000), "4.0 TB");
  EXPECT_EQ(opc::describeBytes(~0ull), "18 EB");
}

TEST(Count, IsOfOneThingOrOfSeveral) {
  EXPECT_EQ(opc::counted(0, "empty folder"), "0 empty folders");
  EXPECT_EQ(opc::counted(1, "empty folder"), "1 empty folder");
  EXPECT_EQ(opc::counted(12345, "file"), "12345 files");
  EXPECT_EQ(opc::counted(~0ull, "file"), "18446744073709551615 files");
}

TEST(Count, IsGroupedByThreeDigitsWhereAsked) {
  EXPECT_EQ(opc::grouped(999), "999");
  EXPECT_EQ(opc::grouped(1000), "1,000");
  EXPECT_EQ(opc::grouped(~0ull), "18,446,744,073,709,551,615");
  EXPECT_EQ(opc::counted(1, "file", opc::Digits::Grouped), "1 file");
  EXPECT_EQ(opc::counted(123456, "file", opc::Digits::Grouped), "123,456 files");
}

}  // namespace
