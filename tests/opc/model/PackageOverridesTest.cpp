// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "opc/model/Package.h"
#include "tests/opc/model/PackageFixture.h"

using opc::interfaces::OpenMode;
using test::MemoryPackage;
using test::partName;
using test::relationshipsXml;
using test::relationshipXml;

namespace {

std::string relationshipsOverride(std::string_view name) {
  return "<Override PartName=\"" + std::string(name) + "\" ContentType=\"" +
         std::string(test::kRelationshipsTypeName) + "\"/>";
}

bool types(const MemoryPackage& memory, std::string_view name) {
  const std::string& xml = memory.disk.bytes("[Content_Types].xml");
  return xml.find("\"" + std::string(name) + "\"") != std::string::npos;
}

}  // namespace

TEST(PackageOverrides, TheLastRelationshipOfThePackageTakesTheOverrideWithIt) {
  MemoryPackage memory;
  memory.disk.add("[Content_Types].xml", test::typesXml(relationshipsOverride("/_rels/.rels")));
  memory.with("_rels/.rels", relationshipsXml(relationshipXml("r", "/a.m"))).with("a.m");
  memory.package.open(OpenMode::Modify);

  memory.package.deleteRelationship(u"r");
  memory.package.close(false);

  EXPECT_FALSE(memory.disk.has("_rels/.rels"));
  EXPECT_FALSE(types(memory, "/_rels/.rels"));
}

TEST(PackageOverrides, TheLastRelationshipOfAPartTakesTheOverrideWithIt) {
  MemoryPackage memory;
  memory.disk.add("[Content_Types].xml", test::typesXml(relationshipsOverride("/_rels/a.m.rels")));
  memory.with("_rels/a.m.rels", relationshipsXml(relationshipXml("r", "/a.m"))).with("a.m");
  memory.package.open(OpenMode::Modify);

  memory.package.getPart(partName(u"/a.m"))->deleteRelationship(u"r");
  memory.package.close(false);

  EXPECT_FALSE(memory.disk.has("_rels/a.m.rels"));
  EXPECT_FALSE(types(memory, "/_rels/a.m.rels"));
}

TEST(PackageOverrides, RelationshipsOfAMissingPartTakeTheOverrideWithThem) {
  MemoryPackage memory;
  memory.disk.add("[Content_Types].xml", test::typesXml(relationshipsOverride("/_rels/b.m.rels")));
  memory.with("_rels/b.m.rels", relationshipsXml("")).with("a.m");
  memory.package.open(OpenMode::Modify);

  memory.create(u"/c.m", u"text/plain", "");
  memory.package.close(false);

  EXPECT_FALSE(memory.disk.has("_rels/b.m.rels"));
  EXPECT_FALSE(types(memory, "/_rels/b.m.rels"));
}

TEST(PackageOverrides, RelationshipsDeletedAfterAFailedCommitTakeTheOverrideWithThem) {
  MemoryPackage memory;
  memory.disk.add("[Content_Types].xml", test::typesXml(relationshipsOverride("/_rels/.rels")));
  memory.with("_rels/.rels", relationshipsXml(relationshipXml("r", "/a.m"))).with("a.m");
  memory.package.open(OpenMode::Modify);
  memory.create(u"/c.m", u"text/plain", "");
  memory.physical.failCommits(1);
  test::faultOf([&] { memory.package.close(false); });

  memory.package.deleteRelationship(u"r");
  memory.package.close(false);

  EXPECT_FALSE(memory.disk.has("_rels/.rels"));
  EXPECT_FALSE(types(memory, "/_rels/.rels"));
}
