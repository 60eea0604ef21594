// SPDX-License-Identifier: MIT
#include "tool/commands/detail/PackageOpening.h"

#include "addon/comparison/OtherContent.h"
#include "tool/process/Errors.h"
#include "tool/report/Messages.h"

namespace tool::commands::detail {

namespace {

std::unique_ptr<AddonPackage> open(const std::string& path, opc::interfaces::OpenMode mode) {
  auto package = std::make_unique<AddonPackage>(opc::SystemPath{path});
  package->logicalPackage().open(mode);
  return package;
}

}  // namespace

std::unique_ptr<AddonPackage> openForReading(const std::string& path) {
  return open(path, opc::interfaces::OpenMode::Read);
}

std::unique_ptr<AddonPackage> openForChanging(const std::string& path) {
  return open(path, opc::interfaces::OpenMode::Modify);
}

void warnIfNotAddon(AddonPackage& package, const std::string& path,
                    const line::Invocation& invocation) {
  if (invocation.settings().isQuiet || addon::comparison::isAddon(package)) return;
  report::printWarning(
      invocation, process::sentence("package", path,
                                    "it is not an add-on; 'kraddon list --all' lists its parts"));
}

}  // namespace tool::commands::detail
