// SPDX-License-Identifier: MIT
#include "opc/signatures/ItemDigests.h"

#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>

using opc::interfaces::Hash;
using opc::signatures::digestOf;
using opc::signatures::ItemDigests;

TEST(ItemDigests, KnowOnlyTheItemsThatWereSet) {
  ItemDigests digests;
  digests.begin(3);
  digests.set(1, digestOf(Hash::Sha256, "b"));

  EXPECT_EQ(digests.find(1), digestOf(Hash::Sha256, "b"));
  EXPECT_EQ(digests.find(0), std::nullopt);
  EXPECT_EQ(digests.find(3), std::nullopt);
  EXPECT_THROW(digests.set(3, digestOf(Hash::Sha256, "d")), std::out_of_range);
}

TEST(ItemDigests, BeginForgetsWhatThereWas) {
  ItemDigests digests;
  digests.begin(1);
  digests.set(0, digestOf(Hash::Sha256, "a"));
  digests.begin(1);

  EXPECT_EQ(digests.find(0), std::nullopt);
}
