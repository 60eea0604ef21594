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

}  // namespace
