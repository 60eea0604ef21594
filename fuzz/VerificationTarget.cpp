// SPDX-License-Identifier: MIT
// The checks of a package: they accept any package, always report the same, and find an error in
// every package that opening refuses.
#include <algorithm>
#include <set>
#include <string>
#include <string_view>

#include "addon/checks/AddonVerification.h"
#include "addon/checks/Catalogue.h"
#include "addon/packaging/AddonPackage.h"
#include "fuzz/MemoryFile.h"
#include "fuzz/Require.h"
#include "opc/Text.h"
#include "opc/checks/PackageVerification.h"
#include "opc/model/XercesHelper.h"

namespace {

using fuzz::require;
using opc::checks::Finding;
using opc::checks::Report;
using opc::interfaces::OpenMode;

void checkFinding(const Finding& finding) {
  require(addon::checks::findInfo(finding.id.number) != nullptr, "a finding is of a known kind");
  require(!finding.message.empty(), "a finding says what is wrong");
  require(opc::isUtf8(finding.message) && opc::isUtf8(finding.part), "a finding is UTF-8");
}

std::set<std::string_view> partsOf(const Report& report) {
  std::set<std::string_view> parts;
  for (const Finding& finding : report.findings()) parts.insert(finding.part);
  return parts;
}

// Whatever draws a finding in any package draws one in an add-on as well, maybe another one that
// counts for more there.
void checkReports(const Report& any, const Report& addon) {
  require(addon.errors() >= any.errors(), "an add-on passes no less");
  require(addon.findings().size() >= any.findings().size(), "an add-on draws no less");
  const std::set<std::string_view> inAny = partsOf(any);
  const std::set<std::string_view> inAddon = partsOf(addon);
  require(std::includes(inAddon.begin(), inAddon.end(), inAny.begin(), inAny.end()),
          "the same parts draw findings");
}

void readPart(opc::model::Package& package, opc::model::PartId id) {
  constexpr std::uint64_t kMaxItemSize = std::uint64_t{256} << 20;
  opc::ByteBuffer bytes;
  package.readPart(id, bytes, kMaxItemSize);
  package.getPart(opc::model::PartName::fromItemName(package.itemNameOf(id)))->getRelationships();
}

void readAll(const std::string& path) {
  addon::packaging::AddonPackage package(opc::fromUtf8(path));
  package.logicalPackage().open(OpenMode::Read);
  package.logicalPackage().visitParts(
      "", [&](opc::model::PartId id) { readPart(package.logicalPackage(), id); });
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::MemoryFile file;
  file.fill(fuzz::textOf(data, size));

  const Report any = opc::checks::verifyPackage(file.path());
  const Report addon = addon::checks::verifyAddon(file.path());
  for (const Finding& finding : addon.findings()) checkFinding(finding);
  checkReports(any, addon);
  const bool isReadable = fuzz::isAccepted([&] { readAll(file.path()); });
  require(isReadable || any.errors() != 0, "what cannot be read has an error");
  return 0;
}
