// SPDX-License-Identifier: MIT
#include "opc/zippackage/ItemInfoOf.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <ostream>
#include <string>
#include <vector>

#include "tests/opc/zippackage/DirectoryFixture.h"

namespace opc::zippackage {
namespace {

using interfaces::ItemKind;

constexpr std::uint32_t kMode = 1u << 16;  // from Unix it stands in the upper half
constexpr std::uint32_t kLabel = 0x08;
constexpr std::uint32_t kDosFolder = 0x10;

struct Attributes {
  const char* description;
  std::uint16_t host;
  std::uint32_t attributes;
  ItemKind file;    ///< of the name "d"
  ItemKind folder;  ///< of the name "d/"
};

void PrintTo(const Attributes& tested, std::ostream* stream) {
  *stream << tested.description;
}

class ItemKinds : public testing::TestWithParam<Attributes> {};

TEST_P(ItemKinds, AreThoseOfNameAndAttributes) {
  const Attributes& tested = GetParam();
  CentralHeader header;
  header.madeBy = static_cast<std::uint16_t>(tested.host << 8 | 20);
  header.externalAttributes = tested.attributes;

  EXPECT_EQ(itemKindOf("d", header), tested.file);
  EXPECT_EQ(itemKindOf("d/", header), tested.folder);
}

constexpr ItemKind kFile = ItemKind::File;
constexpr ItemKind kFolder = ItemKind::Folder;
constexpr ItemKind kLink = ItemKind::SymbolicLink;
constexpr ItemKind kSpecial = ItemKind::Special;

std::vector<Attributes> knownAttributes() {
  std::vector<Attributes> all{
      {"no attributes from DOS", 0, 0, kFile, kFolder},
      {"a folder of DOS", 0, kDosFolder, kFile, kFolder},
      {"a Unix mode that DOS does not know", 0, 0120777 * kMode, kFile, kFolder},
      {"a label of an unknown host", 77, kLabel, kFile, kFolder},
      {"a Unix mode of an unknown host", 77, 0120777 * kMode, kFile, kFolder}};
  for (const std::uint16_t host : std::initializer_list<std::uint16_t>{0, 6, 10, 14}) {
    all.push_back({"a label", host, kLabel, kSpecial, kSpecial});
  }
  for (const std::uint16_t host : std::initializer_list<std::uint16_t>{3, 19}) {
    all.push_back({"no type", host, 0644 * kMode, kFile, kFolder});
    all.push_back({"a file", host, 0100644 * kMode, kFile, kFolder});
    all.push_back({"a folder", host, 0040755 * kMode, kSpecial, kFolder});
    all.push_back({"a link", host, 0120777 * kMode, kLink, kLink});
    all.push_back({"a device", host, 0020644 * kMode, kSpecial, kSpecial});
    all.push_back({"a pipe", host, 0010644 * kMode, kSpecial, kSpecial});
    all.push_back({"the bit of a label", host, 0100644 * kMode | kLabel, kFile, kFolder});
  }
  return all;
}

INSTANTIATE_TEST_SUITE_P(ItemInfoOf, ItemKinds, testing::ValuesIn(knownAttributes()));

TEST(ItemInfoOf, TheExecutableBitIsThatOfHostsWithAUnixMode) {
  const auto isExecutable = [](std::uint16_t host, std::uint32_t mode) {
    test::ZipBuilder builder = test::twoItems();
    builder.items[0].central.madeBy = static_cast<std::uint16_t>(host << 8 | 20);
    builder.items[0].central.externalAttributes = mode * kMode;
    return itemInfoOf(test::directoryOf(builder), 0).executable;
  };

  EXPECT_TRUE(isExecutable(3, 0100755));
  EXPECT_TRUE(isExecutable(19, 0100755));
  EXPECT_FALSE(isExecutable(19, 0100644));
  EXPECT_FALSE(isExecutable(0, 0100755));
}

}  // namespace
}  // namespace opc::zippackage
