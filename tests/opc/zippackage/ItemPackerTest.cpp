// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/ItemPacker.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "tests/opc/zippackage/PackageFixture.h"
#include "tests/support/PiecewiseStream.h"

namespace opc::zippackage {
namespace {

using detail::ItemPacker;
using detail::PackedItem;
using test::PiecewiseStream;
using test::TextSource;

TEST(ItemPacker, ReadsUpToItsLimitWhole) {
  const std::string text(kWholeLimit, 'x');
  TextSource source(text);
  PiecewiseStream just(text, 1000000);
  PiecewiseStream more(text + "y", 1000000);
  ItemPacker packer;

  EXPECT_TRUE(packer.read(just, source));
  EXPECT_EQ(packer.begun().size(), kWholeLimit);
  EXPECT_FALSE(packer.read(more, source));
}

class PickySource final : public interfaces::IContentSource {
 public:
  explicit PickySource(std::uint64_t leastPackedSize) : leastPackedSize_(leastPackedSize) {}
  std::unique_ptr<InputStream> getInputStream() override {
    return std::make_unique<PiecewiseStream>(test::packableText(5000), 1000);
  }
  std::uint64_t size() const override { return 5000; }
  std::uint64_t leastPackedSize() const override { return leastPackedSize_; }
  std::string description() const override { return "picky"; }

 private:
  std::uint64_t leastPackedSize_;
};

/// The method and the packed size.
std::pair<std::uint16_t, std::size_t> packed(PickySource&& source) {
  ItemPacker packer;
  EXPECT_TRUE(packer.read(*source.getInputStream(), source));
  const PackedItem item = packer.pack(6, source);
  return {item.method, item.data.size()};
}

TEST(ItemPacker, StoresWhatWouldPackBelowTheLeastSizeOfItsSource) {
  const auto [method, size] = packed(PickySource(0));
  ASSERT_EQ(method, kDeflated);

  EXPECT_EQ(packed(PickySource(size)), std::pair(kDeflated, size));
  EXPECT_EQ(packed(PickySource(size + 1)), std::pair(kStored, std::size_t{5000}));
}

TEST(ItemPacker, TakesAtMostTwiceTheMemoryOfASourceThatHoldsMoreThanItSaid) {
  const std::string text = test::packableText(70000);
  TextSource source(text);
  source.declaring(10);
  PiecewiseStream stream(text, 1000);
  ItemPacker packer;

  ASSERT_TRUE(packer.read(stream, source));

  EXPECT_EQ(std::string(packer.begun().begin(), packer.begun().end()), text);
  EXPECT_LE(stream.furthest(), 2 * text.size());
}

}  // namespace
}  // namespace opc::zippackage
