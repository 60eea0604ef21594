// SPDX-License-Identifier: MIT
#include "text/ByteCount.h"

#include <gtest/gtest.h>

namespace {

TEST(ByteCount, IsShownShort) {
  EXPECT_EQ(text::describeBytes(0), "0 B");
  EXPECT_EQ(text::describeBytes(999), "999 B");
  EXPECT_EQ(text::describeBytes(1000), "1.0 kB");
  EXPECT_EQ(text::describeBytes(1949), "1.9 kB");
  EXPECT_EQ(text::describeBytes(9949), "9.9 kB");
  EXPECT_EQ(text::describeBytes(9950), "10 kB");
  EXPECT_EQ(text::describeBytes(12345), "12 kB");
  EXPECT_EQ(text::describeBytes(999499), "999 kB");
  EXPECT_EQ(text::describeBytes(999999), "1.0 MB");
  EXPECT_EQ(text::describeBytes(4'000'000'000'000), "4.0 TB");
  EXPECT_EQ(text::describeBytes(~0ull), "18 EB");
}

TEST(Count, IsOfOneThingOrOfSeveral) {
  EXPECT_EQ(text::counted(0, "empty folder"), "0 empty folders");
  EXPECT_EQ(text::counted(1, "empty folder"), "1 empty folder");
  EXPECT_EQ(text::counted(12345, "file"), "12345 files");
  EXPECT_EQ(text::counted(~0ull, "file"), "18446744073709551615 files");
}

TEST(Count, IsGroupedByThreeDigitsWhereAsked) {
  EXPECT_EQ(text::grouped(999), "999");
  EXPECT_EQ(text::grouped(1000), "1,000");
  EXPECT_EQ(text::grouped(~0ull), "18,446,744,073,709,551,615");
  EXPECT_EQ(text::counted(1, "file", text::Digits::Grouped), "1 file");
  EXPECT_EQ(text::counted(123456, "file", text::Digits::Grouped), "123,456 files");
}

}  // namespace
