// SPDX-License-Identifier: MIT
// The readers of ZipPhysicalPackage::makeReader().
#include <gtest/gtest.h>

#include <span>
#include <string>

#include "tests/opc/zippackage/PackageFixture.h"
#include "tests/opc/zippackage/ZipPackagesFixture.h"
#include "tests/support/ZipBuilder.h"

namespace opc::zippackage {
namespace {

using interfaces::OpenMode;

TEST_F(ZipPackages, OpenForReadingHaveMoreReadersOfTheSameItems) {
  test::ZipBuilder builder;
  builder.add({.name = "good", .content = "content"});
  builder.add({.name = "bad", .content = "content"});
  builder.items[1].local.crc = builder.items[1].central.crc = 5;
  test::writeFile(path(), builder.build());
  const auto package = opened(OpenMode::Read);
  const auto one = package->makeReader();
  const auto other = package->makeReader();
  const auto textOf = [](std::span<const unsigned char> bytes) {
    return std::string(bytes.begin(), bytes.end());
  };
  ByteBuffer bytes;

  for (interfaces::IItemReader* reader : {one.get(), other.get()}) {
    reader->readItem(0, bytes, 100);
    EXPECT_EQ(textOf(bytes.bytes()), "content");
    EXPECT_EQ(textOf(reader->packedBytes(0, 3, 100)), "tent");
    EXPECT_EQ(test::errorOf([&] { reader->readItem(1, bytes, 100); }), "the checksum is wrong");
  }
  EXPECT_EQ(test::textOf(*package, "good"), "content");
}

TEST_F(ZipPackages, OpenForChangesHaveNoOtherReaders) {
  const auto created = opened(OpenMode::Create);
  EXPECT_EQ(created->makeReader(), nullptr);
  created->close(false);

  EXPECT_EQ(opened(OpenMode::Modify)->makeReader(), nullptr);
}

TEST_F(ZipPackages, ThatAreNotOpenRefuseToMakeReaders) {
  auto package = test::packageAt(path());
  ErrorCode code{};

  const std::string error = test::errorOf([&] { package.makeReader(); }, &code);

  EXPECT_EQ(error, "package '" + path().string() + "' is not open");
  EXPECT_EQ(code, ErrorCode::InvalidState);
}

TEST_F(ZipPackages, RefuseAnItemThatIsNotThereAlikeInAllReaders) {
  test::makePackage(path(), {"a", "1", "b", "2"});
  const auto package = opened(OpenMode::Read);
  const auto reader = package->makeReader();
  const std::string expected = "package '" + path().string() + "' has no item of number 2";
  ByteBuffer bytes;

  for (interfaces::IItemReader* each :
       {static_cast<interfaces::IItemReader*>(package.get()), reader.get()}) {
    ErrorCode code{};
    EXPECT_EQ(test::errorOf([&] { each->readItem(2, bytes, 100); }, &code), expected);
    EXPECT_EQ(code, ErrorCode::InvalidArgument);
    EXPECT_EQ(test::errorOf([&] { each->packedBytes(2, 0, 1); }, &code), expected);
    EXPECT_EQ(code, ErrorCode::InvalidArgument);
  }
}

}  // namespace
}  // namespace opc::zippackage
