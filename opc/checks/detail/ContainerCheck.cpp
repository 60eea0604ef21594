// SPDX-License-Identifier: MIT
#include "opc/checks/detail/ContainerCheck.h"

#include <optional>
#include <string>
#include <string_view>

#include "opc/checks/PackageFindings.h"
#include "opc/checks/Report.h"
#include "opc/checks/detail/FaultFindings.h"
#include "opc/checks/detail/ItemDataCheck.h"
#include "opc/zippackage/ItemInfoOf.h"

namespace opc::checks::detail {

using interfaces::ItemKind;
using zippackage::kNoEntry;
using zippackage::PackageFile;
using zippackage::ZipDirectory;
using zippackage::ZipEntry;
using zippackage::ZipFault;
using zippackage::ZipFaultKind;
using zippackage::ZipFaultSeverity;

namespace {

constexpr std::uint64_t kUnsuspiciousSize = std::uint64_t{64} << 20;  // bytes
constexpr std::uint64_t kUnsuspiciousRatio = 200;

class ContainerCheck {
 public:
  ContainerCheck(const ZipDirectory& directory, Report& report)
      : directory_(directory), report_(report), states_(directory.entries().size()) {}

  std::vector<ItemState> run(const PackageFile& file,
                             const interfaces::ProgressFunction& progress) {
    for (const ZipFault& fault : directory_.faults()) takeFault(fault);
    for (std::size_t entry = 0; entry < states_.size(); ++entry) checkEntry(entry);
    ItemDataCheck(file, directory_, states_, report_).run(progress);
    for (std::size_t entry = 0; entry < states_.size(); ++entry) checkRatio(entry);
    return std::move(states_);
  }

 private:
  void takeFault(const ZipFault& fault) {
    // ItemDataCheck reports gaps between items, since it knows where the items really end.
    const bool isGap =
        fault.kind == ZipFaultKind::UnusedBytes && fault.first < directory_.location().offset;
    const std::optional<FindingId> id = isGap ? std::nullopt : findingOf(fault.kind);
    const bool isOfItem = fault.entry != kNoEntry;
    if (isOfItem) mark(states_[fault.entry], fault, id);
    if (!id) return;
    const std::string_view name = isOfItem ? directory_.name(fault.entry) : std::string_view();
    report_.addClipped(*id, name, directory_.describe(fault), fault.rule());
  }

  static void mark(ItemState& state, const ZipFault& fault, std::optional<FindingId> id) {
    if (id == kUnusableName) {
      state.hasBadName = true;
    } else if (id == kDuplicateName || id == kDuplicateFolder) {
      state.isTwin = true;
    } else if (fault.severity() == ZipFaultSeverity::Refused) {
      state.isDamaged = true;
    }
  }

  void checkEntry(std::size_t entry) {
    const std::string_view name = directory_.name(entry);
    if (!states_[entry].hasBadName) {
      states_[entry].hasBadName = checkItemName(name, directory_.storedName(entry), report_);
    }
    const ItemKind kind = zippackage::itemInfoOf(directory_, entry).kind;
    if (kind == ItemKind::SymbolicLink) {
      report_.addClipped(kLinkOrDevice, name, "it is a symbolic link", "RB-14");
    } else if (kind == ItemKind::Special) {
      report_.addClipped(kLinkOrDevice, name,
                         "it is a device, a label or something else that is not a file", "RB-14");
    }
  }

  void checkRatio(std::size_t entry) {
    const ZipEntry& item = directory_.entries()[entry];
    if (states_[entry].isDamaged || item.size <= kUnsuspiciousSize) return;
    if (item.packedSize >= item.size / kUnsuspiciousRatio) return;
    report_.addClipped(
        kHighRatio, directory_.name(entry),
        std::to_string(item.packedSize) + " bytes decompress to " + std::to_string(item.size),
        "RB-1");
  }

  const ZipDirectory& directory_;
  Report& report_;
  std::vector<ItemState> states_;
};

}  // namespace

std::vector<ItemState> checkContainer(const PackageFile& file, const ZipDirectory& directory,
                                      const interfaces::ProgressFunction& progress,
                                      Report& report) {
  return ContainerCheck(directory, report).run(file, progress);
}

}  // namespace opc::checks::detail
