// SPDX-License-Identifier: MIT
#include "opc/PackageTarget.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/opc/zippackage/PackageFixture.h"
#include "tests/support/TemporaryFolder.h"

namespace opc {
namespace {

namespace fs = std::filesystem;

class PackageTargets : public testing::Test {
 protected:
  std::string resolved(const fs::path& path) {
    return PackageTarget::resolve(path.string()).path();
  }
  std::string real(std::string_view name) {
    return (fs::canonical(folder_.path()) / name).string();
  }

  test::TemporaryFolder folder_;
};

TEST_F(PackageTargets, OfAPlainPathAreItsFolderAndName) {
  const PackageTarget target = PackageTarget::resolve((folder_ / "p.kraddon").string());

  EXPECT_EQ(target.folder, fs::canonical(folder_.path()).string());
  EXPECT_EQ(target.name, "p.kraddon");
}

TEST_F(PackageTargets, AreWhereChainsOfLinksLead) {
  fs::create_directory(folder_ / "sub");
  fs::create_symlink("sub/second", folder_ / "first");
  fs::create_symlink("../real", folder_ / "sub" / "second");
  EXPECT_EQ(resolved(folder_ / "first"), real("real")) << "dangling";

  test::writeFile(folder_ / "real", "x");

  EXPECT_EQ(resolved(folder_ / "first"), real("real"));
}

TEST_F(PackageTargets, FollowAbsoluteLinksAndLinkedFolders) {
  fs::create_directory(folder_ / "sub");
  fs::create_directory_symlink("sub", folder_ / "linked");
  fs::create_symlink(folder_ / "sub" / "real", folder_ / "absolute");

  EXPECT_EQ(resolved(folder_ / "linked" / "p"), real("sub/p"));
  EXPECT_EQ(resolved(folder_ / "absolute"), real("sub/real"));
}

TEST_F(PackageTargets, RefuseLinksInACircle) {
  fs::create_symlink("b", folder_ / "a");
  fs::create_symlink("a", folder_ / "b");

  EXPECT_NE(test::errorOf([&] { resolved(folder_ / "a"); }).find("Too many levels"),
            std::string::npos);
}

TEST_F(PackageTargets, RefuseAFolderThatIsNotThere) {
  EXPECT_EQ(
      test::errorOf([&] { resolved(folder_ / "missing" / "p"); }),
      "cannot find folder '" + (folder_ / "missing").string() + "': No such file or directory");
}

TEST_F(PackageTargets, WithoutASlashAreInTheCurrentFolder) {
  EXPECT_EQ(PackageTarget::resolve("p.kraddon").folder, fs::current_path().string());
}

TEST_F(PackageTargets, InTheRootHaveOneSlash) {
  EXPECT_EQ(PackageTarget::resolve("/no-such-package").path(), "/no-such-package");
}

}  // namespace
}  // namespace opc
