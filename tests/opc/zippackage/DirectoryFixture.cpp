// SPDX-License-Identifier: MIT
#include "tests/opc/zippackage/DirectoryFixture.h"

#include "opc/Exception.h"
#include "tests/support/TemporaryFolder.h"

namespace test {

using opc::FormatError;
using opc::zippackage::PackageFile;
using opc::zippackage::ZipDirectory;
using opc::zippackage::ZipFault;
using opc::zippackage::ZipFaultKind;

ZipDirectory directoryOf(const std::string& bytes) {
  const TemporaryFolder folder;
  writeFile(folder / "p.zip", bytes);
  return ZipDirectory::read(PackageFile((folder / "p.zip").string()));
}

ZipDirectory directoryOf(const ZipBuilder& builder) {
  return directoryOf(builder.build());
}

ZipBuilder twoItems() {
  ZipBuilder builder;
  builder.add({.name = "a.txt", .content = "first"});
  builder.add({.name = "b/c.txt", .content = "second, second, second", .deflate = true});
  return builder;
}

std::string refusalOf(const std::string& bytes) {
  try {
    directoryOf(bytes).refuseFaults();
    return "";
  } catch (const FormatError& e) {
    return e.rule() + ": " + e.what();
  }
}

std::string refusalOf(const ZipBuilder& builder) {
  return refusalOf(builder.build());
}

std::vector<ZipFaultKind> faultsOf(const ZipBuilder& builder) {
  const ZipDirectory directory = directoryOf(builder);
  std::vector<ZipFaultKind> kinds;
  for (const ZipFault& fault : directory.faults()) kinds.push_back(fault.kind);
  return kinds;
}

}  // namespace test
