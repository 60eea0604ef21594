// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <string>

#include "opc/model/Package.h"
#include "opc/zippackage/ZipPhysicalPackage.h"
#include "tests/opc/model/PackageFixture.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/ZipBuilder.h"

// Packages that other programs could have written.

using opc::interfaces::OpenMode;
using opc::model::Package;
using test::faultOf;

namespace {

test::Fault faultOfOpening(const test::ZipBuilder& builder) {
  const test::TemporaryFolder folder;
  test::writeFile(folder / "a.kraddon", builder.build());
  opc::zippackage::ZipPhysicalPackage physical((folder / "a.kraddon").u16string(), true, u"");
  Package package(physical, true);
  return faultOf([&] { package.open(OpenMode::Read); });
}

// In the directory an extra field follows the name; the id of this one begins with a slash.
test::ZipItem itemBeforeASlash(std::string name) {
  test::ZipItem item{.name = std::move(name), .content = "data"};
  item.central.extra = test::extraField('/', "x");
  return item;
}

}  // namespace

TEST(ForeignPackage, ANameEndsWhereTheDirectorySaysWhateverFollows) {
  test::ZipBuilder untyped;
  untyped.add({.name = "[Content_Types].xml", .content = test::typesXml()});
  untyped.add({.name = "folder/a.m"}).add(itemBeforeASlash("folder"));
  test::ZipBuilder typed;
  typed.add({.name = "[Content_Types].xml", .content = test::typesXml()});
  typed.add({.name = "folder.m/a.m"}).add(itemBeforeASlash("folder.m"));

  EXPECT_EQ(faultOfOpening(untyped).rule, "none");
  const test::Fault fault = faultOfOpening(typed);
  EXPECT_EQ(fault.rule, "PN-9");
  EXPECT_NE(fault.text.find("'/folder.m/a.m': it extends the name '/folder.m'"), std::string::npos)
      << fault.text;
}
