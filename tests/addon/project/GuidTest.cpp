// SPDX-License-Identifier: MIT
#include "addon/project/Guid.h"

#include <gtest/gtest.h>

using addon::project::guidOfName;
using addon::project::isGuid;
using addon::project::randomGuid;

TEST(Guid, OfANameIsVersion5InTheUrlNamespace) {
  // python3: uuid.uuid5(uuid.NAMESPACE_URL, "kraddon:Wave Tools")
  EXPECT_EQ(guidOfName("Wave Tools"), "345491c9-0ee2-50de-aedd-a6aebfe78015");
}

TEST(Guid, RandomOnesDiffer) {
  EXPECT_NE(randomGuid(), randomGuid());
  EXPECT_EQ(randomGuid().size(), 36u);
  EXPECT_EQ(randomGuid()[14], '4');
}

TEST(Guid, MayBeInBraces) {
  EXPECT_TRUE(isGuid(u"{6F0C1C1E-7D0E-4F0B-9A51-0B6F2D3C4E5F}"));
  EXPECT_FALSE(isGuid(u"{6f0c1c1e-7d0e-4f0b-9a51-0b6f2d3c4e5f"));
  EXPECT_FALSE(isGuid(u"6f0c1c1e-7d0e-4f0b-9a51-0b6f2d3c4e5g"));
  EXPECT_FALSE(isGuid(u"6f0c1c1e07d0e04f0b09a5100b6f2d3c4e5f"));
}
