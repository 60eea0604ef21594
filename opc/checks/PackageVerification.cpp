// SPDX-License-Identifier: MIT
#include "opc/checks/PackageVerification.h"

#include <optional>
#include <string>

#include "opc/checks/PackageFinding.h"
#include "opc/checks/PackageFindings.h"
#include "opc/checks/detail/CheckedContainer.h"
#include "opc/checks/detail/ContainerCheck.h"
#include "opc/checks/detail/PackagingCheck.h"
#include "opc/zippackage/EndOfDirectory.h"
#include "opc/zippackage/ErrorContext.h"
#include "opc/zippackage/PackageFile.h"
#include "opc/zippackage/ZipDirectory.h"

namespace opc::checks {

using opc::interfaces::ProgressFunction;
using opc::zippackage::PackageFile;
using opc::zippackage::ZipDirectory;

namespace {

FindingId findingOf(std::string_view rule) {
  if (rule == "ZP-6") return kUnsupportedPacking;
  return rule == "ZP-9" || rule == "ZP-14" ? kInconsistentRecords : kNotZip;
}

// Checking takes some six times as much memory.
constexpr std::uint64_t kLargestDirectory = std::uint64_t{128} << 20;  // bytes

// Nothing when there is none that could be taken apart.
std::optional<ZipDirectory> readDirectory(const PackageFile& file, Report& report) {
  std::uint64_t size = 0;
  try {
    opc::zippackage::FileTail tail(file);
    size = opc::zippackage::findDirectory(tail).size;
    if (size <= kLargestDirectory) return ZipDirectory::read(file);
  } catch (const opc::SystemError&) {
    throw;
  } catch (const opc::FormatError& fault) {
    addFinding(report, findingOf(fault.rule()), "", fault.what(), fault.rule());
  } catch (const opc::Exception& fault) {
    addFinding(report, kNotZip, "", fault.what(), "ZP-16");
  }
  if (size <= kLargestDirectory) return std::nullopt;
  throw opc::Exception(opc::ErrorCode::TooLarge,
                       "its directory has " + std::to_string(size) + " bytes, more than the " +
                           std::to_string(kLargestDirectory) + " that are checked");
}

void checkFile(const std::string& path, const PackageFile& file, const ProgressFunction& progress,
               Report& report) {
  const std::optional<ZipDirectory> directory = readDirectory(file, report);
  if (!directory) return;
  const std::vector<detail::ItemState> states =
      detail::checkContainer(file, *directory, progress, report);
  detail::CheckedContainer container(path, file, *directory, states);
  detail::checkPackaging(container, report);
}

}  // namespace

Report verifyPackage(const std::string& path, const ProgressFunction& progress) {
  Report report;
  const PackageFile file(path);
  opc::zippackage::inContext([&] { return "cannot check package '" + path + "'"; },
                             [&] { checkFile(path, file, progress, report); });
  return report;
}

}  // namespace opc::checks
