// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <iterator>
#include <memory>
#include <string>

#include "opc/Exception.h"
#include "opc/zippackage/ZipPhysicalPackage.h"
#include "tests/opc/zippackage/PackageFixture.h"
#include "tests/support/TemporaryFolder.h"

namespace opc::zippackage {

/// A package on disk, to be changed and looked at.
class Commits : public testing::Test {
 protected:
  Commits() { test::makePackage(path(), {"a.txt", "first", "b.txt", test::packableText(3000)}); }

  std::filesystem::path path() const { return folder_ / "p.kraddon"; }
  std::string bytes() const { return test::readFile(path()); }
  std::size_t filesInFolder() const {
    return static_cast<std::size_t>(
        std::distance(std::filesystem::directory_iterator(folder_.path()),
                      std::filesystem::directory_iterator()));
  }
  mode_t modeOf(const std::filesystem::path& file) const {
    struct stat status {};
    EXPECT_EQ(::stat(file.c_str(), &status), 0);
    return status.st_mode & 07777;
  }

  /// Opens the package and adds an item to it.
  std::unique_ptr<ZipPhysicalPackage> changed() {
    auto package = std::make_unique<ZipPhysicalPackage>(path().u16string(), true, u"");
    package->open(interfaces::OpenMode::Modify);
    test::addText(*package, {.name = "new.txt"}, "new content");
    return package;
  }

  /// Commits, expects a failure, and checks that it left everything as it was.
  std::string failureOf(ZipPhysicalPackage& package, ErrorCode* code = nullptr) {
    const std::string before = bytes();
    const std::string error = test::errorOf([&] { package.close(false); }, code);
    EXPECT_NE(error, "");
    EXPECT_TRUE(package.isOpen());
    EXPECT_EQ(bytes(), before);
    EXPECT_EQ(filesInFolder(), 1u);
    return error;
  }

  test::TemporaryFolder folder_;
};

}  // namespace opc::zippackage
