// SPDX-License-Identifier: MIT
#include "tests/opc/checks/PackageUnderTest.h"

#include <fstream>
#include <utility>

#include "tests/opc/model/PackageFixture.h"
#include "tests/support/TemporaryFolder.h"

namespace test {

using opc::checks::Report;

PackageUnderTest::PackageUnderTest() {
  zip.add({.name = "[Content_Types].xml", .deflate = true});
  zip.add({.name = "_rels/.rels", .deflate = true});
  zip.add({.name = "a.xml", .content = "<a/>"});
  zip.add({.name = "b.m", .content = std::string(3000, 'b'), .deflate = true});
  setTypes("");
  setRelationships("");
}

void PackageUnderTest::setTypes(std::string_view more) {
  types().content = typesXml(more);
}

void PackageUnderTest::setRelationships(std::string_view more) {
  relationships().content = relationshipsXml(relationshipXml("rId1", "/a.xml") + std::string(more));
}

void PackageUnderTest::addCore(std::string_view properties) {
  setTypes(
      "<Override PartName=\"/core.xml\" "
      "ContentType=\"application/vnd.openxmlformats-package.core-properties+xml\"/>");
  setRelationships(
      "<Relationship Id=\"rId2\" Target=\"core.xml\" "
      "Type=\"http://schemas.openxmlformats.org/package/2006/relationships/metadata/"
      "core-properties\"/>");
  add("core.xml",
      "<cp:coreProperties "
      "xmlns:cp=\"http://schemas.openxmlformats.org/package/2006/metadata/core-properties\" "
      "xmlns:dc=\"http://purl.org/dc/elements/1.1/\" xmlns:dcterms=\"http://purl.org/dc/terms/\" "
      "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\">" +
          std::string(properties) + "</cp:coreProperties>");
}

ZipItem& PackageUnderTest::add(std::string name, std::string content) {
  zip.add({.name = std::move(name), .content = std::move(content)});
  return zip.items.back();
}

Report PackageUnderTest::check() const {
  return verifyBytes(zip.build());
}

Report verifyBytes(const std::string& bytes) {
  const TemporaryFolder folder;
  writeFile(folder / "p.zip", bytes);
  return opc::checks::verifyPackage((folder / "p.zip").string());
}

}  // namespace test
