// SPDX-License-Identifier: MIT
#include "addon/checks/Verification.h"

#include <optional>
#include <string>

#include "addon/checks/AddonChecks.h"
#include "addon/checks/CheckedContainer.h"
#include "addon/checks/ContainerCheck.h"
#include "addon/checks/PackageFinding.h"
#include "addon/checks/PackageFindings.h"
#include "addon/checks/PackagingCheck.h"
#include "opc/Text.h"
#include "opc/zippackage/EndOfDirectory.h"
#include "opc/zippackage/ErrorContext.h"
#include "opc/zippackage/PackageFile.h"
#include "opc/zippackage/ZipDirectory.h"

namespace addon::checks {

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

// A package that readers refuse has drawn an error by now; what its documents say is moot then.
void checkAddon(const std::string& path, Report& report) {
  packaging::AddonPackage package(opc::fromUtf8(path));
  try {
    package.logicalPackage().open(opc::interfaces::OpenMode::Read);
  } catch (const opc::SystemError&) {
    throw;
  } catch (const opc::FormatError& fault) {
    if (report.errors() == 0) addFinding(report, kBadContentTypes, "", fault.what(), fault.rule());
    return;
  } catch (const opc::Exception& fault) {
    if (report.errors() == 0) addFinding(report, kBadContentTypes, "", fault.what(), "");
    return;
  }
  checkDocuments(package, report);
  checkReferences(package, report);
  checkStyle(package, report);
}

// Whether there was anything to check.
bool checkFile(const std::string& path, const PackageFile& file, const ProgressFunction& progress,
               Report& report) {
  const std::optional<ZipDirectory> directory = readDirectory(file, report);
  if (!directory) return false;
  const std::vector<ItemState> states = checkContainer(file, *directory, progress, report);
  CheckedContainer container(path, file, *directory, states);
  checkPackaging(container, report);
  return true;
}

bool checkAnyPackage(const std::string& path, const ProgressFunction& progress, Report& report) {
  const PackageFile file(path);
  return opc::zippackage::inContext([&] { return "cannot check package '" + path + "'"; },
                                    [&] { return checkFile(path, file, progress, report); });
}

}  // namespace

Report verifyPackage(const std::string& path, Scope scope, const ProgressFunction& progress) {
  Report report;
  if (checkAnyPackage(path, progress, report) && scope == Scope::Addon) checkAddon(path, report);
  return report;
}

}  // namespace addon::checks
