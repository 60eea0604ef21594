// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "addon/comparison/FileHashes.h"
#include "opc/interfaces/MemoryContentSource.h"
#include "tests/addon/packaging/AddonPackageFixture.h"
#include "tests/opc/zippackage/PackageFixture.h"
#include "tests/support/Threads.h"

namespace addon::comparison {

/// Packages with as many files as it takes for a second thread.
class ManyFiles : public test::AddonPackageTest {
 protected:
  using Hashes = std::vector<std::string>;

  static constexpr std::uint32_t kFiles = 300;

  /// In the order in which they are listed.
  static std::string pathOf(std::uint32_t file) { return "f" + std::to_string(1000 + file); }
  static std::string contentOf(std::uint32_t file) {
    return file == 5 ? "" : test::randomText(file * 40, file + 1);
  }

  static void add(AddonPackage& package, const std::string& path, std::string content) {
    const opc::model::StandardPartInfo info(opc::interfaces::CompressionType::Normal, 0);
    package.fileSystem().addFile(
        std::make_unique<opc::interfaces::MemoryContentSource>(std::move(content), "memory"), info,
        path);
  }
  static void addMany(AddonPackage& package) {
    for (std::uint32_t file = 0; file < kFiles; ++file) {
      add(package, pathOf(file), contentOf(file));
    }
  }
  void createMany() const {
    create();
    modify(addMany);
  }

  /// Changes a byte of a file's content on the disk.
  void damage(std::uint32_t file) const {
    std::string bytes = test::readFile(file_);
    bytes.at(bytes.find(contentOf(file))) ^= 1;
    test::writeFile(file_, bytes);
  }
};

}  // namespace addon::comparison
