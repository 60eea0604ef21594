// SPDX-License-Identifier: MIT
#include "opc/model/Package.h"

#include <gtest/gtest.h>

#include "opc/model/PackageHelper.h"
#include "tests/opc/model/PackageFixture.h"

using opc::ErrorCode;
using opc::interfaces::OpenMode;
using opc::model::Package;
using opc::model::URI;
using test::Fault;
using test::faultOf;
using test::MemoryPackage;
using test::partName;

TEST(Package, NeedsToBeOpen) {
  MemoryPackage memory;
  Package& package = memory.package;
  opc::ByteBuffer buffer;

  const Fault faults[] = {
      faultOf([&] { package.hasPart(partName(u"/a")); }),
      faultOf([&] { package.getPart(partName(u"/a")); }),
      faultOf([&] { package.deletePart(partName(u"/a")); }),
      faultOf([&] { package.canCreatePart(partName(u"/a")); }),
      faultOf([&] { memory.create(u"/a", u"a/b", ""); }),
      faultOf([&] { package.visitParts("", [](auto) {}); }),
      faultOf([&] { package.partInfo(0); }),
      faultOf([&] { package.contentTypeOf(0); }),
      faultOf([&] { package.openPart(0); }),
      faultOf([&] { package.readPart(0, buffer, 1); }),
      faultOf([&] { package.getRelationships(); }),
      faultOf([&] { package.hasRelationship(u"a"); }),
      faultOf([&] { package.deleteRelationship(u"a"); }),
      faultOf([&] { package.createExternalRelationship(u"a", URI(u"a"), u""); }),
  };

  for (const Fault& fault : faults) {
    EXPECT_EQ(fault.code, ErrorCode::InvalidState);
    EXPECT_EQ(fault.text, "package 'memory.kraddon': it is not open");
  }
}

TEST(Package, OpeningTwiceIsAnErrorAndLeavesItOpen) {
  MemoryPackage memory;
  memory.with("a.m");
  memory.package.open(OpenMode::Read);

  EXPECT_EQ(memory.faultOfOpening().code, ErrorCode::InvalidState);

  EXPECT_TRUE(memory.package.hasPart(partName(u"/a.m")));
  EXPECT_EQ(memory.package.openCount(), 1u);
}

TEST(Package, SaysWhetherItWasOpenedForReading) {
  MemoryPackage memory;
  memory.with("a.m");
  for (const OpenMode mode : {OpenMode::Read, OpenMode::Modify}) {
    memory.package.open(mode);
    EXPECT_EQ(memory.package.isReadOnly(), mode == OpenMode::Read);
    memory.package.close(true);
  }

  EXPECT_EQ(faultOf([&] { memory.package.isReadOnly(); }).code, ErrorCode::InvalidState);
}

TEST(Package, ClosingWhatIsNotOpenDoesNothing) {
  MemoryPackage memory;

  memory.package.close(false);
  memory.package.close(true);

  EXPECT_FALSE(memory.disk.items.has_value());
}

TEST(Package, MayBeOpenedAgainAfterAFailure) {
  MemoryPackage memory;
  EXPECT_EQ(memory.faultOfOpening().code, ErrorCode::FileSystem);

  memory.with("a.m");
  memory.package.open(OpenMode::Read);

  EXPECT_TRUE(memory.package.hasPart(partName(u"/a.m")));
}

TEST(Package, DestructionDiscards) {
  MemoryPackage memory;
  {
    Package package(memory.physical, true);
    package.open(OpenMode::Create);
  }

  EXPECT_FALSE(memory.physical.isOpen());
  EXPECT_FALSE(memory.disk.items.has_value());
}

TEST(Package, HandlesAreDeadAfterClosingEvenWhenItIsOpenAgain) {
  MemoryPackage memory;
  memory.with("a.m");
  memory.package.open(OpenMode::Modify);
  const auto part = memory.package.getPart(partName(u"/a.m"));
  memory.package.close(true);
  const auto expectDead = [&] {
    EXPECT_EQ(faultOf([&] { part->getInputStream(); }).code, ErrorCode::InvalidState);
    EXPECT_EQ(faultOf([&] { part->getOutputStream(); }).code, ErrorCode::InvalidState);
    EXPECT_EQ(faultOf([&] { part->getRelationships(); }).text,
              "part '/a.m': its package has been closed");
  };

  expectDead();
  memory.package.open(OpenMode::Modify);

  expectDead();
}

TEST(Package, HandlesOfDeletedPartsAreDead) {
  MemoryPackage memory;
  memory.with("a.m");
  memory.package.open(OpenMode::Modify);
  const auto part = memory.package.getPart(partName(u"/a.m"));
  memory.package.deletePart(partName(u"/a.m"));
  memory.create(u"/a.m", u"text/plain", "other");

  EXPECT_EQ(faultOf([&] { part->getInputStream(); }).code, ErrorCode::InvalidState);
  EXPECT_EQ(faultOf([&] { part->getOutputStream(); }).code, ErrorCode::InvalidState);
  EXPECT_EQ(faultOf([&] { memory.package.partInfo(part->id()); }).code, ErrorCode::InvalidState);
  EXPECT_EQ(faultOf([&] { memory.package.openPart(12345); }).code, ErrorCode::InvalidState);
}

TEST(Package, WithoutClosingThePhysicalPackageItsOwnerCommits) {
  MemoryPackage memory;
  memory.with("a.m");
  Package package(memory.physical, false);
  memory.physical.open(OpenMode::Modify);
  package.open(OpenMode::Modify);
  package.deletePart(partName(u"/a.m"));

  package.close(false);
  EXPECT_TRUE(memory.physical.isOpen());
  EXPECT_EQ(memory.disk.commits, 0u);
  memory.physical.close(false);

  EXPECT_FALSE(memory.disk.has("a.m"));
}

TEST(Package, AFailedOpeningLeavesAContainerThatIsNotItsOwnOpen) {
  MemoryPackage memory;
  memory.disk.add("a", "");
  Package package(memory.physical, false);
  memory.physical.open(OpenMode::Read);

  EXPECT_EQ(faultOf([&] { package.open(OpenMode::Read); }).rule, "CT-1");

  EXPECT_TRUE(memory.physical.isOpen());
}

TEST(Package, IsClosedWhenOnlyTheFlushOfTheFolderFailed) {
  MemoryPackage memory;
  memory.with("a.m");
  memory.package.open(OpenMode::Modify);
  const auto part = memory.package.getPart(partName(u"/a.m"));
  memory.create(u"/b.m", u"text/plain", "");
  memory.physical.failNextFlush();

  EXPECT_EQ(faultOf([&] { memory.package.close(false); }).code, ErrorCode::FileSystem);

  EXPECT_FALSE(memory.package.isOpen());
  EXPECT_EQ(faultOf([&] { part->getInputStream(); }).code, ErrorCode::InvalidState);
  EXPECT_TRUE(memory.disk.has("b.m"));
  memory.package.open(OpenMode::Read);
  EXPECT_TRUE(memory.package.hasPart(partName(u"/b.m")));
}

TEST(Package, KnowsTheRelationshipTypeOfThumbnails) {
  EXPECT_EQ(opc::model::PackageHelper::getThumbnailRelationshipType(),
            u"http://schemas.openxmlformats.org/package/2006/relationships/metadata/thumbnail");
}
