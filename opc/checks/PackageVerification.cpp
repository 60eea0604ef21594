// SPDX-License-Identifier: MIT
#include "opc/checks/PackageVerification.h"

#include <optional>
#include <string>

#include "opc/Exception.h"
#include "opc/checks/PackageFindings.h"
#include "opc/checks/detail/CheckedContainer.h"
#include "opc/checks/detail/ContainerCheck.h"
#include "opc/checks/detail/FaultFindings.h"
#include "opc/checks/detail/Packaging.h"
#include "opc/plservices/LoadedFileTree.h"
#include "opc/signatures/ItemDigests.h"
#include "opc/zippackage/EndOfDirectory.h"
#include "opc/zippackage/PackageFile.h"
#include "opc/zippackage/ZipDirectory.h"

namespace opc::checks {

using interfaces::ProgressFunction;
using zippackage::PackageFile;
using zippackage::ZipDirectory;

namespace {

// Checking takes about six times as much memory.
constexpr std::uint64_t kMaxDirectorySize = std::uint64_t{128} << 20;  // bytes

// Returns nothing if there is no directory that can be parsed.
std::optional<ZipDirectory> readDirectory(const PackageFile& file, Report& report) {
  std::uint64_t size = 0;
  try {
    zippackage::FileTail tail(file);
    size = zippackage::findDirectory(tail).size;
    if (size <= kMaxDirectorySize) return ZipDirectory::read(file);
  } catch (const SystemError&) {
    throw;
  } catch (const Exception& fault) {
    detail::addFault(report, fault, kNotZip, "", "ZP-16");
  }
  if (size <= kMaxDirectorySize) return std::nullopt;
  throw Exception(ErrorCode::TooLarge, "its directory has " + std::to_string(size) +
                                           " bytes, more than the " +
                                           std::to_string(kMaxDirectorySize) + " that are checked");
}

// Where the parts of signatures usually are, which no file of the tree is. If they are elsewhere,
// what they cover is read twice.
bool looksSigned(const ZipDirectory& directory) {
  for (std::size_t i = 0; i < directory.entries().size(); ++i) {
    const std::string_view name = directory.name(i);
    const bool isFile = name.starts_with(plservices::kFilesFolder);
    if (!isFile && name.find("signature") != std::string_view::npos) return true;
  }
  return false;
}

void checkFile(const std::string& path, const PackageFile& file, const SignatureDemands& demands,
               Reading& reading, Report& report) {
  const std::optional<ZipDirectory> directory = readDirectory(file, report);
  if (!directory) return;
  signatures::ItemDigests own;
  reading.digests = demands.digests;
  if (reading.digests == nullptr && looksSigned(*directory)) reading.digests = &own;
  const std::vector<detail::ItemState> states =
      detail::checkContainer(file, *directory, reading, report);
  detail::CheckedContainer container(path, file, *directory, states);
  detail::checkPackaging(container, {demands.anchors, demands.isRequired, reading.digests}, report);
}

}  // namespace

Report verifyPackage(const std::string& path, const ProgressFunction& progress,
                     const SignatureDemands& demands,
                     const interfaces::BackgroundStarter& starter) {
  Reading reading{.progress = progress, .starter = starter};
  return verifyAs(Subject::Package, path, demands, reading);
}

Report verifyAs(Subject subject, const std::string& path, const SignatureDemands& demands,
                Reading& reading) {
  Report report(subject);
  const PackageFile file(path);
  inContext([&] { return "cannot check package '" + path + "'"; },
            [&] { checkFile(path, file, demands, reading, report); });
  return report;
}

}  // namespace opc::checks
