// SPDX-License-Identifier: MIT
#include "addon/checks/AddonVerification.h"

#include "addon/checks/detail/AddonFacts.h"
#include "addon/checks/detail/DocumentCheck.h"
#include "addon/checks/detail/ReadableDocument.h"
#include "addon/checks/detail/ReferenceCheck.h"
#include "addon/checks/detail/SecretSearch.h"
#include "addon/checks/detail/StyleCheck.h"
#include "opc/Exception.h"
#include "opc/checks/PackageFindings.h"
#include "opc/checks/PackageVerification.h"

namespace addon::checks {

using opc::checks::kBadContentTypes;
using opc::checks::Report;
using opc::checks::verifyAs;

namespace {

// Returns whether the package is open. If it cannot be opened, the report usually has an error
// already.
bool open(packaging::AddonPackage& package, Report& report) {
  if (package.logicalPackage().isOpen()) return true;
  try {
    package.logicalPackage().open(opc::interfaces::OpenMode::Read);
    return true;
  } catch (const opc::SystemError&) {
    throw;
  } catch (const opc::Exception& fault) {
    if (report.errors() != 0) return false;
    const auto* format = dynamic_cast<const opc::FormatError*>(&fault);
    report.addClipped(kBadContentTypes, "", fault.what(), format == nullptr ? "" : format->rule());
    return false;
  }
}

void checkDescribed(packaging::AddonPackage& package, Report& report, detail::FileTable fileTable) {
  detail::checkDocuments(package, report, fileTable);
  const detail::AddonFacts facts(package);
  detail::checkIdentity(package, facts, report);
  detail::checkReferences(package, facts, report);
  detail::checkTexts(package, facts, report);
}

Report verify(packaging::AddonPackage& package, const std::string& path,
              const opc::checks::SignatureDemands& demands, opc::checks::Reading reading) {
  reading.test = detail::hasNoSecrets;
  Report report = verifyAs(opc::checks::Subject::Addon, path, demands, reading);
  if (open(package, report)) checkAddon(package, report, reading.passed);
  return report;
}

}  // namespace

Report verifyAddon(const std::string& path, const opc::interfaces::ProgressFunction& progress,
                   const opc::checks::SignatureDemands& demands,
                   const opc::interfaces::BackgroundStarter& starter) {
  packaging::AddonPackage package(opc::SystemPath{path});
  return verifyOpened(package, path, progress, demands, starter);
}

Report verifyOpened(packaging::AddonPackage& package, const std::string& path,
                    const opc::interfaces::ProgressFunction& progress,
                    const opc::checks::SignatureDemands& demands,
                    const opc::interfaces::BackgroundStarter& starter) {
  return verify(package, path, demands, {.progress = progress, .starter = starter});
}

Report verifyWritten(const std::string& path, const opc::interfaces::PackedContents& packed,
                     const opc::interfaces::ProgressFunction& progress,
                     const opc::interfaces::BackgroundStarter& starter) {
  packaging::AddonPackage package(opc::SystemPath{path});
  return verify(package, path, {}, {.progress = progress, .starter = starter, .packed = &packed});
}

opc::interfaces::PackedContents contentsForCheck() {
  return opc::interfaces::PackedContents(detail::hasNoSecrets);
}

void checkAddon(packaging::AddonPackage& package, Report& report,
                const std::vector<bool>& withoutSecrets) {
  checkDescribed(package, report, detail::FileTable::Checked);
  if (detail::isReadable([&] { package.fileSystem().getRoot(); })) {
    detail::checkTreeItems(package, report);
  }
  detail::checkStyle(package, report, withoutSecrets);
}

void checkDescriptions(packaging::AddonPackage& package, Report& report) {
  checkDescribed(package, report, detail::FileTable::LeftOut);
}

void checkAddedFiles(packaging::AddonPackage& package, opc::plservices::NodeId firstNew,
                     Report& report) {
  if (!detail::isReadable([&] { package.fileSystem().getRoot(); })) return;
  detail::checkFiles(package, report, {}, firstNew);
}

}  // namespace addon::checks
