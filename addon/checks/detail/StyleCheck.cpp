// SPDX-License-Identifier: MIT
#include "addon/checks/detail/StyleCheck.h"

#include <chrono>

#include "addon/checks/AddonFindings.h"
#include "addon/checks/detail/ReadableDocument.h"
#include "text/ByteCount.h"

namespace addon::checks::detail {

using opc::checks::Report;
using packaging::AddonPackage;

namespace {

// Clocks differ, and programs write local times of different time zones.
constexpr std::int64_t kTolerance = std::int64_t{24} * 60 * 60;  // seconds

std::int64_t now() {
  using std::chrono::seconds;
  using std::chrono::system_clock;
  return std::chrono::duration_cast<seconds>(system_clock::now().time_since_epoch()).count();
}

}  // namespace

void checkTimes(AddonPackage& package, Report& report) {
  auto& model = package.logicalPackage();
  const std::int64_t latest = now() + kTolerance;
  model.visitParts("", [&](opc::model::PartId part) {
    const opc::model::PartInfo info = model.partInfo(part);
    if (info.modified <= latest) return;
    const std::int64_t days = (info.modified - latest + kTolerance) / kTolerance;
    report.add(kFutureTime, "/" + std::string(info.itemName),
               "the entry's time is " + text::counted(static_cast<std::uint64_t>(days), "day") +
                   " in the future");
  });
}

void checkStyle(AddonPackage& package, Report& report, const std::vector<bool>& withoutSecrets) {
  checkTimes(package, report);
  if (!isReadable([&] { package.fileSystem().getRoot(); })) return;
  checkFiles(package, report, withoutSecrets);
  checkCopies(package, report, withoutSecrets);
}

}  // namespace addon::checks::detail
