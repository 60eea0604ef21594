// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "opc/zippackage/ZipPhysicalPackage.h"
#include "tests/opc/zippackage/PackageFixture.h"
#include "tests/support/TemporaryFolder.h"

namespace opc::zippackage {

/// A package in a folder of its own.
class ZipPackages : public testing::Test {
 protected:
  std::filesystem::path path() const { return folder_ / "p.kraddon"; }

  std::unique_ptr<ZipPhysicalPackage> opened(interfaces::OpenMode mode) {
    auto package = std::make_unique<ZipPhysicalPackage>(path().u16string(), true, u"");
    package->open(mode);
    return package;
  }
  interfaces::ItemInfo infoOf(const ZipPhysicalPackage& package, std::string_view name) {
    return package.itemInfo(test::find(package, name).value());
  }
  std::string python(const std::string& expression) {
    return test::outputOf("/usr/bin/python3 -c \"import zipfile; z = zipfile.ZipFile('" +
                          path().string() + "'); print(" + expression + ")\"");
  }

  test::TemporaryFolder folder_;
};

}  // namespace opc::zippackage
