// SPDX-License-Identifier: MIT
#include "addon/catalogue/VersionOrder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace {

using addon::catalogue::compareVersions;

bool isOlder(const std::string& a, const std::string& b) {
  return compareVersions(a, b) < 0;
}

TEST(VersionOrder, NumbersAreComparedByTheirValue) {
  EXPECT_TRUE(isOlder("1.9", "1.10"));
  EXPECT_TRUE(isOlder("2", "10"));
  EXPECT_TRUE(isOlder("1.99999999999999999999", "1.100000000000000000000"));
  EXPECT_TRUE(isOlder("1.0", "1.0.1"));
}

TEST(VersionOrder, EverythingElseIsText) {
  EXPECT_TRUE(isOlder("1.0-alpha", "1.0-beta"));
  EXPECT_TRUE(isOlder("R2046b", "R2047a"));
  EXPECT_TRUE(isOlder("", "0"));
  EXPECT_TRUE(isOlder("1.0", "1.0-beta"));
}

TEST(VersionOrder, OnlyEqualTextsAreEqual) {
  EXPECT_EQ(compareVersions("1.0", "1.0"), 0);
  EXPECT_NE(compareVersions("1.0", "1.00"), 0);
  EXPECT_EQ(isOlder("1.0", "1.00"), !isOlder("1.00", "1.0"));
}

TEST(VersionOrder, AnyVersionsHaveOneOrder) {
  std::vector<std::string> versions{"1a", "2",   "10",  "1.0",  "1.00", "1.0b", "b1",
                                    "b",  "",    "v10", "v9",   "1..2", "1.-2", "\xC3\xA9",
                                    "01", "1.1", "1.a", "1.10", "9a",   "10-1"};
  std::sort(versions.begin(), versions.end(), isOlder);
  const std::vector<std::string> sorted = versions;
  std::mt19937 random(1);
  for (int i = 0; i < 50; ++i) {
    std::shuffle(versions.begin(), versions.end(), random);
    std::sort(versions.begin(), versions.end(), isOlder);
    ASSERT_EQ(versions, sorted);
  }
  for (std::size_t i = 0; i < sorted.size(); ++i) {
    for (std::size_t j = i + 1; j < sorted.size(); ++j) {
      EXPECT_TRUE(isOlder(sorted[i], sorted[j])) << sorted[i] << " and " << sorted[j];
    }
  }
}

}  // namespace
