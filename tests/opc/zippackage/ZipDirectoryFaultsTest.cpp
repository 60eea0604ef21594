// SPDX-License-Identifier: MIT
// From where on something is a fault, and how it is refused.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "opc/Exception.h"
#include "opc/zippackage/ZipDirectory.h"
#include "tests/opc/zippackage/DirectoryFixture.h"
#include "tests/opc/zippackage/PackageFixture.h"
#include "tests/support/ZipBuilder.h"

namespace opc::zippackage {
namespace {

using test::directoryOf;
using test::faultsOf;
using test::twoItems;
using test::ZipBuilder;

using Kinds = std::vector<ZipFaultKind>;

ErrorCode codeOf(const ZipBuilder& builder) {
  ErrorCode code{};
  EXPECT_NE(test::errorOf([&] { directoryOf(builder).refuseFaults(); }, &code), "");
  return code;
}

TEST(ZipFaults, ReportUnsupportedFeaturesWithTheirOwnCode) {
  ZipBuilder encrypted = twoItems();
  encrypted.items[0].central.flags = 1;
  ZipBuilder method = twoItems();
  method.items[0].central.method = 12;
  ZipBuilder volume = twoItems();
  volume.disk = 1;
  ZipBuilder twice = twoItems();
  twice.add({.name = "a.txt"});

  EXPECT_EQ(codeOf(encrypted), ErrorCode::Unsupported);
  EXPECT_EQ(codeOf(method), ErrorCode::Unsupported);
  EXPECT_EQ(codeOf(volume), ErrorCode::Unsupported);
  EXPECT_EQ(codeOf(twice), ErrorCode::InvalidPackage);
}

// An item may have so many bytes that do not show in the directory.
TEST(ZipFaults, IncludeGapsBeyondTheHiddenBytesOfAnItem) {
  const std::string unseen(kMaxUnseen, '\0');
  ZipBuilder between = twoItems();
  between.items[1].before = unseen;
  ZipBuilder behind = twoItems();
  behind.add({.before = unseen, .writeLocal = false, .writeCentral = false});
  EXPECT_EQ(faultsOf(between), Kinds{});
  EXPECT_EQ(faultsOf(behind), Kinds{});

  between.items[1].before += '\0';
  behind.items[2].before += '\0';

  EXPECT_EQ(faultsOf(between), Kinds{ZipFaultKind::UnusedBytes});
  EXPECT_EQ(faultsOf(behind), Kinds{ZipFaultKind::UnusedBytes});
}

}  // namespace
}  // namespace opc::zippackage
