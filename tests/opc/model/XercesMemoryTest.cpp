// SPDX-License-Identifier: MIT
#include "opc/model/detail/XercesMemory.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace opc::model {
namespace {

using detail::startXerces;
using detail::XercesMemory;

class XercesMemoryUse : public ::testing::Test {
 protected:
  bool isInBlock(const void* memory) const {
    const auto at = reinterpret_cast<std::uintptr_t>(memory);
    const auto start = reinterpret_cast<std::uintptr_t>(block_.data());
    return at >= start && at < start + block_.size();
  }

  alignas(std::max_align_t) std::array<unsigned char, 256> block_{};
  XercesMemory memory_{block_.data(), block_.size()};
};

TEST_F(XercesMemoryUse, OfTheBlockIsMadeOnlyWhileItIsCritical) {
  std::optional<XercesMemory::Critical> critical(memory_);

  void* within = memory_.allocate(10);
  critical.reset();
  void* after = memory_.allocate(10);

  EXPECT_TRUE(isInBlock(within));
  EXPECT_FALSE(isInBlock(after));
  memory_.deallocate(within);
  memory_.deallocate(after);
}

TEST_F(XercesMemoryUse, GivesPiecesThatDoNotOverlapAndAreAligned) {
  const XercesMemory::Critical critical(memory_);

  auto* first = static_cast<unsigned char*>(memory_.allocate(1));
  auto* second = static_cast<unsigned char*>(memory_.allocate(17));
  auto* third = static_cast<unsigned char*>(memory_.allocate(1));

  EXPECT_GE(second, first + 1);
  EXPECT_GE(third, second + 17);
  for (const auto* each : {first, second, third}) {
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(each) % alignof(std::max_align_t), 0u);
    memory_.deallocate(const_cast<unsigned char*>(each));
  }
}

TEST_F(XercesMemoryUse, GoesBeyondABlockThatIsUsedUp) {
  const XercesMemory::Critical critical(memory_);
  void* all = memory_.allocate(250);

  void* more = memory_.allocate(8);

  EXPECT_TRUE(isInBlock(all));
  EXPECT_FALSE(isInBlock(more));
  memory_.deallocate(more);
  memory_.deallocate(all);
}

TEST_F(XercesMemoryUse, UsesNoPieceOfTheBlockTwice) {
  const XercesMemory::Critical critical(memory_);
  void* first = memory_.allocate(100);
  memory_.deallocate(first);

  void* second = memory_.allocate(100);

  EXPECT_TRUE(isInBlock(second));
  EXPECT_NE(second, first);
}

TEST_F(XercesMemoryUse, FreeingNullDoesNothing) {
  memory_.deallocate(nullptr);
  const XercesMemory::Critical critical(memory_);

  void* still = memory_.allocate(8);

  EXPECT_TRUE(isInBlock(still));
  memory_.deallocate(still);
}

TEST(XercesMemory, StartsAgainWithoutEffect) {
  startXerces();

  EXPECT_NO_THROW(startXerces());
}

}  // namespace
}  // namespace opc::model
