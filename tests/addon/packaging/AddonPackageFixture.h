// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "addon/packaging/AddonPackage.h"
#include "tests/support/PackageInspector.h"
#include "tests/support/TemporaryFolder.h"

namespace test {

inline addon::packaging::AddonProperties toolbox() {
  addon::packaging::AddonProperties properties;
  properties.type = u"Korvan Toolbox";
  properties.name = u"Curves";
  properties.version = u"1.2";
  properties.KorvanRelease = u"R1999a";
  properties.summary = u"one line";
  properties.description = u"at length";
  properties.authorName = u"Ada";
  properties.authorContact = u"a@b.c";
  properties.authorOrganization = u"O";
  properties.GUID = u"g-1";
  return properties;
}

/// A package in a folder of its own.
class AddonPackageTest : public testing::Test {
 protected:
  using AddonPackage = addon::packaging::AddonPackage;

 private:
  TemporaryFolder folder_;

 protected:
  const std::filesystem::path file_ = folder_ / "a.kraddon";
  const PackageInspector inspector_{file_};

  std::u16string path() const { return file_.u16string(); }

  void create(addon::packaging::AddonProperties properties = toolbox()) const {
    std::u16string name = path();
    AddonPackage package(name, properties);
    package.logicalPackage().close(false);
  }

  /// Opens the package, does `work` on it and commits.
  template <typename Work>
  void modify(Work work) const {
    AddonPackage package(path());
    package.logicalPackage().open(opc::interfaces::OpenMode::Modify);
    work(package);
    package.logicalPackage().close(false);
  }

  /// What `work` finds in the package.
  template <typename Work>
  auto read(Work work) const {
    AddonPackage package(path());
    package.logicalPackage().open(opc::interfaces::OpenMode::Read);
    return work(package);
  }

  void store(const std::u16string& type, const std::u16string& text) const {
    modify([&](AddonPackage& package) {
      addon::packaging::AddonLicense license;
      license.type = type;
      license.text = text;
      package.setLicense(license);
    });
  }

  /// A license read over one that holds "old" twice.
  std::u16string loadOver() const {
    return read([](AddonPackage& package) {
      addon::packaging::AddonLicense license;
      license.type = license.text = u"old";
      package.getLicense(license);
      return license.type + u"/" + license.text;
    });
  }

  std::u16string diskFile(const char* name, const char* content = "content") const {
    writeFile(folder_ / name, content);
    return (folder_ / name).u16string();
  }

  std::vector<std::u16string> list() const {
    return read([](AddonPackage& package) { return package.getFileList(); });
  }

  const std::filesystem::path& folder() const { return folder_.path(); }
};

}  // namespace test
