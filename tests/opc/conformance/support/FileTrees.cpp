// SPDX-License-Identifier: MIT
#include "tests/opc/conformance/support/FileTrees.h"

#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/plservices/FileContentSource.h"
#include "opc/plservices/FileSystemManager.h"
#include "opc/zippackage/ZipPhysicalPackage.h"
#include "tests/opc/conformance/support/ReadPackage.h"
#include "tests/support/TemporaryFolder.h"

namespace test::conformance {
namespace {

using opc::model::Package;
using opc::plservices::FileSystemManager;

void withPackage(const std::string& bytes, const std::function<void(Package&)>& action) {
  const TemporaryFolder folder;
  writeFile(folder / "p.kraddon", bytes);
  opc::zippackage::ZipPhysicalPackage physical((folder / "p.kraddon").u16string(), false, u"");
  Package package(physical, true);
  package.open(opc::interfaces::OpenMode::Read);
  action(package);
}

}  // namespace

std::string packedTree(const std::vector<std::string>& files,
                       const std::vector<std::string>& folders) {
  const TemporaryFolder disk;
  return writtenPackage([&](Package& package) {
    FileSystemManager tree(package);
    int number = 0;
    for (const std::string& path : files) {
      const auto source = disk / std::to_string(++number);
      writeFile(source, path);
      tree.addFile(std::make_unique<opc::plservices::FileContentSource>(source.string()), path);
    }
    for (const std::string& path : folders) tree.createFolder(opc::fromUtf8(path));
  });
}

std::vector<std::string> treeOf(const std::string& bytes) {
  std::vector<std::string> paths;
  withPackage(bytes, [&](Package& package) {
    FileSystemManager(package).visitFiles([&](std::string_view path, const auto& entry) {
      paths.push_back(std::string(path) + (entry.isFile() ? "" : "/"));
    });
  });
  return sorted(paths);
}

std::string extractionFault(const std::string& bytes, const std::filesystem::path& destination) {
  std::string fault;
  withPackage(bytes, [&](Package& package) {
    try {
      FileSystemManager(package).extractAll(destination.u16string(),
                                            opc::plservices::RestoreMode::KeepExisting);
    } catch (const opc::Exception& thrown) {
      fault = thrown.what();
    }
  });
  return fault;
}

std::vector<std::string> unreadableIn(const std::string& bytes) {
  std::vector<std::string> lines;
  withPackage(bytes, [&](Package& package) {
    FileSystemManager files(package);
    for (const auto& file : files.unreadable()) lines.push_back(file.line);
  });
  return lines;
}

std::vector<std::string> extractedTree(const std::string& bytes) {
  const TemporaryFolder disk;
  const auto destination = disk / "out";
  withPackage(bytes, [&](Package& package) {
    FileSystemManager(package).extractAll(destination.u16string(),
                                          opc::plservices::RestoreMode::KeepExisting);
  });
  std::vector<std::string> paths;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(disk.path())) {
    const std::string path = std::filesystem::relative(entry.path(), destination).string();
    if (entry.is_directory() && !entry.is_symlink()) continue;
    paths.push_back(path);
  }
  return sorted(paths);
}

}  // namespace test::conformance
