// SPDX-License-Identifier: MIT
#include "addon/catalogue/SiteUpdate.h"

#include <gtest/gtest.h>

#include "addon/catalogue/Root.h"
#include "opc/Exception.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using addon::catalogue::BrokenSite;
using addon::catalogue::parseVersionName;
using addon::catalogue::prepareSite;
using addon::catalogue::updateSite;

TEST(SiteUpdate, AVersionNameEndsAtItsLastAt) {
  EXPECT_EQ(parseVersionName("a@b@1.0").guid, "a@b");
  EXPECT_EQ(parseVersionName("a@b@1.0").version, "1.0");
  EXPECT_EQ(parseVersionName("ab").version, "");
}

TEST(SiteUpdate, AFolderWithOtherThingsBecomesNoSite) {
  const test::TemporaryFolder folder;
  test::writeFile(folder / "thesis.txt", "x");

  EXPECT_THROW(prepareSite(folder.path()), opc::Exception);
  test::writeFile(folder / "root.json", "x");
  EXPECT_NO_THROW(prepareSite(folder.path()));
}

TEST(SiteUpdate, WithoutPackagesNothingIsWritten) {
  const test::TemporaryFolder folder;
  prepareSite(folder / "site");

  const auto result = updateSite({.site = folder / "site", .packages = {}, .time = "2026"});

  EXPECT_EQ(result.sequence, 0u);
  EXPECT_TRUE(std::filesystem::is_empty(folder / "site"));
}

TEST(SiteUpdate, ASiteThatLostItsRootIsBroken) {
  const test::TemporaryFolder folder;
  test::writeFile(folder / "records.ndjson", "");

  EXPECT_THROW(updateSite({.site = folder.path(), .packages = {}, .time = "2026"}), BrokenSite);
}

}  // namespace
