// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/AlignedHeader.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "opc/zippackage/ExtraFields.h"
#include "opc/zippackage/LittleEndian.h"
#include "opc/zippackage/ZipFormat.h"
#include "opc/zippackage/detail/OutputFile.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/ZipBuilder.h"

namespace opc::zippackage {
namespace {

using detail::AlignedHeader;
using detail::OutputFile;

constexpr std::uint16_t kHint = 0xA220;
constexpr std::uint16_t kHintSignature = 0xA028;

/// The header at `from` in a file, for a place at its beginning.
std::optional<AlignedHeader> movedToTheBeginning(std::uint64_t from, const test::ZipItem& item) {
  const test::TemporaryFolder folder;
  test::ZipBuilder builder;
  builder.prefix = std::string(from, 'x');
  builder.add(item);
  const std::string bytes = builder.build();
  test::writeFile(folder / "file", bytes);
  return detail::alignHeader(PackageFile((folder / "file").string()), from,
                             bytes.find("PK\x01\x02"), 0);
}

// A hint takes some bytes at least; where the data are to move less, it takes a block more.
TEST(AlignedHeader, HoldsOneWholeHintWhateverTheDistance) {
  test::ZipItem item{.name = "name", .content = "content"};
  item.local.extra = test::extraField(7, "other");
  for (const std::uint64_t from : {1u, 2u, 3u, 4u, 7u, 8u, 9u, 100u, 4095u, 4097u}) {
    const auto header = movedToTheBeginning(from, item).value();

    const auto fields = LocalHeader::decode(header.bytes).value();
    const Bytes extra = Bytes(header.bytes).subspan(LocalHeader::kSize + fields.nameLength);
    EXPECT_EQ(extra.size(), fields.extraLength) << from;
    EXPECT_EQ(ExtraFieldWalk::faultOf(extra), ExtraFault::None) << from;
    EXPECT_TRUE(ExtraFieldWalk::find(extra, 7)) << from;
    const auto hint = ExtraFieldWalk::find(extra, kHint).value();
    ASSERT_GE(hint.size(), 4u) << from;
    EXPECT_EQ(load16(hint.data()), kHintSignature) << from;
    EXPECT_EQ(load16(hint.data() + 2), hint.size() - 4) << from;
    EXPECT_EQ(header.bytes.size() % OutputFile::kBlock,
              (from + header.oldSize) % OutputFile::kBlock)
        << from;
  }
}

TEST(AlignedHeader, IsNotMadeForAPlaceThatIsAlignedAlready) {
  const test::ZipItem item{.name = "name", .content = "content"};

  EXPECT_FALSE(movedToTheBeginning(2 * OutputFile::kBlock, item));
}

}  // namespace
}  // namespace opc::zippackage
