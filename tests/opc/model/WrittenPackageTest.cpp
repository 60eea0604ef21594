// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>

#include "opc/model/Package.h"
#include "opc/zippackage/ZipPhysicalPackage.h"
#include "tests/opc/model/PackageFixture.h"
#include "tests/support/TemporaryFolder.h"

using opc::interfaces::OpenMode;
using opc::model::Package;
using opc::model::URI;
using opc::zippackage::ZipPhysicalPackage;
using test::partName;

namespace {

// What Python's zipfile and ElementTree find in a package: items, content types, relationships.
constexpr const char* kScript = R"(
import sys, zipfile
import xml.etree.ElementTree as tree
package = zipfile.ZipFile(sys.argv[1])
assert package.testzip() is None
print(*package.namelist())
for name in ('[Content_Types].xml', '_rels/.rels'):
    root = tree.fromstring(package.read(name))
    print(root.tag)
    for child in root:
        print(child.tag.split('}')[1], ascii(sorted(child.attrib.items())))
)";

std::string inspect(const test::TemporaryFolder& folder) {
  test::writeFile(folder / "inspect.py", kScript);
  const std::string command = "/usr/bin/python3 '" + (folder / "inspect.py").string() + "' '" +
                              (folder / "a.kraddon").string() + "' 2>&1";
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> pipe(::popen(command.c_str(), "r"),
                                                             ::pclose);
  std::string output;
  char block[512];
  while (std::fgets(block, sizeof block, pipe.get()) != nullptr) output += block;
  return output;
}

void create(Package& package, std::u16string_view name, std::u16string_view type) {
  const auto part =
      package.createPart(partName(name), opc::model::ContentType(type),
                         opc::model::StandardPartInfo(opc::interfaces::CompressionType::Normal, 0));
  test::writeText(*part->getOutputStream(), "content");
}

}  // namespace

TEST(WrittenPackage, IsReadByOtherPrograms) {
  const test::TemporaryFolder folder;
  ZipPhysicalPackage physical((folder / "a.kraddon").u16string(), true, u"");
  Package package(physical, true);
  package.open(OpenMode::Create);
  create(package, u"/files/\u00E9%20b.m", u"text/plain");
  create(package, u"/metadata/x.xml", u"application/vnd.x+xml");
  package.createInternalRelationship(u"urn:<&\">", URI(u"/metadata/x.xml"), u"");
  package.createExternalRelationship(u"urn:t", URI(u"a\u00E9\n\tb"), u"");

  package.close(false);

  EXPECT_EQ(inspect(folder),
            "[Content_Types].xml _rels/.rels files/%C3%A9%20b.m metadata/x.xml\n"
            "{http://schemas.openxmlformats.org/package/2006/content-types}Types\n"
            "Default [('ContentType', 'text/plain'), ('Extension', 'm')]\n"
            "Default [('ContentType', "
            "'application/vnd.openxmlformats-package.relationships+xml'), ('Extension', 'rels')]\n"
            "Override [('ContentType', 'application/vnd.x+xml'), ('PartName', "
            "'/metadata/x.xml')]\n"
            "{http://schemas.openxmlformats.org/package/2006/relationships}Relationships\n"
            "Relationship [('Id', 'rId1'), ('Target', '/metadata/x.xml'), ('Type', "
            "'urn:<&\">')]\n"
            "Relationship [('Id', 'rId2'), ('Target', 'a\\xe9\\n\\tb'), ('TargetMode', "
            "'External'), ('Type', 'urn:t')]\n");
}

TEST(WrittenPackage, IsChangedAndReadAgain) {
  const test::TemporaryFolder folder;
  ZipPhysicalPackage physical((folder / "a.kraddon").u16string(), true, u"");
  Package package(physical, true);
  package.open(OpenMode::Create);
  create(package, u"/a.m", u"text/plain");
  create(package, u"/b.m", u"text/plain");
  package.close(false);
  package.open(OpenMode::Modify);
  package.deletePart(partName(u"/a.m"));
  create(package, u"/c.m", u"text/other");
  package.createInternalRelationship(u"urn:t", URI(u"/c.m"), u"");

  package.close(false);

  package.open(OpenMode::Read);
  EXPECT_FALSE(package.hasPart(partName(u"/a.m")));
  EXPECT_EQ(test::readAll(*package.getPart(partName(u"/B.m"))->getInputStream()), "content");
  EXPECT_EQ(package.getPart(partName(u"/c.m"))->getContentType().ascii(), "text/other");
  EXPECT_EQ(package.getRelationships().size(), 1u);
}

TEST(WrittenPackage, StreamsThatOutliveItFail) {
  const test::TemporaryFolder folder;
  auto physical =
      std::make_unique<ZipPhysicalPackage>((folder / "a.kraddon").u16string(), true, u"");
  auto package = std::make_unique<Package>(*physical, true);
  package->open(OpenMode::Create);
  create(*package, u"/a.m", u"text/plain");
  const auto writing = package->getPart(partName(u"/a.m"))->getOutputStream();
  test::writeText(*writing, "content");
  package->close(false);
  package->open(OpenMode::Read);
  const auto reading = package->getPart(partName(u"/a.m"))->getInputStream();

  package.reset();
  physical.reset();

  EXPECT_EQ(test::faultOf([&] { test::readAll(*reading); }).code, opc::ErrorCode::InvalidState);
  EXPECT_EQ(test::faultOf([&] { test::writeText(*writing, "x"); }).code,
            opc::ErrorCode::InvalidState);
}
