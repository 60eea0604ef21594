// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <optional>

#include "opc/model/Package.h"
#include "tests/opc/model/PackageFixture.h"

using opc::ErrorCode;
using opc::interfaces::OpenMode;
using test::Fault;
using test::faultOf;
using test::MemoryPackage;
using test::partName;

namespace {

void expectClosed(const Fault& fault, const char* verb) {
  EXPECT_EQ(fault.code, ErrorCode::InvalidState);
  EXPECT_EQ(fault.text, std::string("cannot ") + verb +
                            " part '/a.m' of 'memory.kraddon': its package has been closed");
}

}  // namespace

TEST(PackageStreams, ReadingAStreamAfterClosingIsAnError) {
  MemoryPackage memory;
  memory.with("a.m", std::string(100000, 'x'));
  memory.package.open(OpenMode::Read);
  const auto stream = memory.package.getPart(partName(u"/a.m"))->getInputStream();
  unsigned char block[64];
  ASSERT_EQ(stream->read(block, sizeof block), sizeof block);

  memory.package.close(true);

  expectClosed(faultOf([&] { stream->read(block, sizeof block); }), "read");
  expectClosed(faultOf([&] { stream->isEnd(); }), "read");
  memory.package.open(OpenMode::Read);
  expectClosed(faultOf([&] { stream->read(block, sizeof block); }), "read");
}

TEST(PackageStreams, ReadingAStreamOverPiecesAfterClosingIsAnError) {
  MemoryPackage memory;
  memory.with("a.m/[0].piece", "one").with("a.m/[1].last.piece", "two");
  memory.package.open(OpenMode::Read);
  const auto part = memory.package.getPart(partName(u"/a.m"));
  const auto stream = memory.package.openPart(part->id());

  memory.package.close(true);

  expectClosed(faultOf([&] { test::readAll(*stream); }), "read");
}

TEST(PackageStreams, AStreamOverPiecesEndsAfterTheLastOne) {
  MemoryPackage memory;
  memory.with("a.m/[0].piece", "one").with("a.m/[1].piece", "").with("a.m/[2].last.piece", "two");
  memory.package.open(OpenMode::Read);
  const auto stream = memory.package.openPart(memory.package.getPart(partName(u"/a.m"))->id());
  std::string text;
  unsigned char byte = 0;

  while (!stream->isEnd()) {
    ASSERT_EQ(stream->read(&byte, 1), 1u) << text;
    text += static_cast<char>(byte);
  }

  EXPECT_EQ(text, "onetwo");
  EXPECT_EQ(stream->read(&byte, 1), 0u);
}

TEST(PackageStreams, AStreamMayOutliveThePackageObject) {
  test::MemoryDisk disk;
  disk.add("[Content_Types].xml", test::typesXml()).add("a.m", "data");
  std::optional<test::MemoryPhysicalPackage> physical(std::in_place, disk);
  auto package = std::make_unique<opc::model::Package>(*physical, true);
  package->open(OpenMode::Read);
  const auto stream = package->getPart(partName(u"/a.m"))->getInputStream();

  package.reset();
  physical.reset();

  expectClosed(faultOf([&] { test::readAll(*stream); }), "read");
}

TEST(PackageStreams, WritingToAStreamAfterClosingIsAnError) {
  MemoryPackage memory;
  memory.with("a.m", "old");
  memory.package.open(OpenMode::Modify);
  const auto stream = memory.package.getPart(partName(u"/a.m"))->getOutputStream();
  test::writeText(*stream, "new");

  memory.package.close(false);

  expectClosed(faultOf([&] { test::writeText(*stream, "late"); }), "write");
  EXPECT_EQ(memory.disk.bytes("a.m"), "new");
}
