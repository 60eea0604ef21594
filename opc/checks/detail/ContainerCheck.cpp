// SPDX-License-Identifier: MIT
#include "opc/checks/detail/ContainerCheck.h"

#include <optional>
#include <string>
#include <string_view>

#include "opc/checks/PackageFinding.h"
#include "opc/checks/PackageFindings.h"
#include "opc/checks/detail/ItemDataCheck.h"
#include "opc/checks/detail/ItemNameCheck.h"
#include "opc/zippackage/ItemInfoOf.h"

namespace opc::checks::detail {

using opc::interfaces::ItemKind;
using opc::zippackage::kNoEntry;
using opc::zippackage::PackageFile;
using opc::zippackage::ZipDirectory;
using opc::zippackage::ZipEntry;
using opc::zippackage::ZipFault;
using opc::zippackage::ZipFaultKind;
using opc::zippackage::ZipFaultSeverity;

namespace {

constexpr std::uint64_t kUnsuspiciousSize = std::uint64_t{64} << 20;  // bytes
constexpr std::uint64_t kUnsuspiciousRatio = 200;

// Nothing for what other checks say better: gaps between items, by their exact ends, and the empty
// name, which makes an item no part.
std::optional<FindingId> findingOf(const ZipDirectory& directory, const ZipFault& fault) {
  switch (fault.kind) {
    case ZipFaultKind::OtherVolume:
    case ZipFaultKind::EndRecordsDiffer:
    case ZipFaultKind::CountDiffers:
    case ZipFaultKind::Zip64ValueMissing:
      return kInconsistentRecords;
    case ZipFaultKind::Encrypted:
    case ZipFaultKind::UnknownMethod:
      return kUnsupportedPacking;
    case ZipFaultKind::StoredSizesDiffer:
      return kDamagedData;
    case ZipFaultKind::NameHasNul:
    case ZipFaultKind::NameNotUtf8:
    case ZipFaultKind::ParentSegment:
      return kUnusableName;
    case ZipFaultKind::NameTwice:
      return kDuplicateName;
    case ZipFaultKind::FolderTwice:
      return kDuplicateFolder;
    case ZipFaultKind::OutsideFile:
    case ZipFaultKind::Overlap:
      return kOverlappingItems;
    case ZipFaultKind::BytesAfterEnd:
    case ZipFaultKind::BytesBeforeFirst:
      return kBytesOutside;
    case ZipFaultKind::UnusedBytes:
      if (fault.first < directory.location().offset) return std::nullopt;
      return kUnusedBytes;
    case ZipFaultKind::ExtraMalformed:
      return kUnusedBytes;
    case ZipFaultKind::NameEmpty:
      return std::nullopt;
  }
  return std::nullopt;
}

class ContainerCheck {
 public:
  ContainerCheck(const ZipDirectory& directory, Report& report)
      : directory_(directory), report_(report), states_(directory.entries().size()) {}

  std::vector<ItemState> run(const PackageFile& file,
                             const opc::interfaces::ProgressFunction& progress) {
    for (const ZipFault& fault : directory_.faults()) takeFault(fault);
    for (std::size_t entry = 0; entry < states_.size(); ++entry) checkEntry(entry);
    ItemDataCheck(file, directory_, states_, report_).run(progress);
    for (std::size_t entry = 0; entry < states_.size(); ++entry) checkRatio(entry);
    return std::move(states_);
  }

 private:
  void takeFault(const ZipFault& fault) {
    const std::optional<FindingId> id = findingOf(directory_, fault);
    const bool isOfItem = fault.entry != kNoEntry;
    if (isOfItem) mark(states_[fault.entry], fault, id);
    if (!id) return;
    const std::string_view name = isOfItem ? directory_.name(fault.entry) : std::string_view();
    addFinding(report_, *id, name, directory_.describe(fault), fault.rule());
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
    const ItemKind kind = opc::zippackage::itemInfoOf(directory_, entry).kind;
    if (kind == ItemKind::SymbolicLink) {
      addFinding(report_, kLinkOrDevice, name, "it is a symbolic link", "RB-14");
    } else if (kind == ItemKind::Special) {
      addFinding(report_, kLinkOrDevice, name,
                 "it is a device, a label or something else that is no file", "RB-14");
    }
  }

  void checkRatio(std::size_t entry) {
    const ZipEntry& item = directory_.entries()[entry];
    if (states_[entry].isDamaged || item.size <= kUnsuspiciousSize) return;
    if (item.packedSize >= item.size / kUnsuspiciousRatio) return;
    addFinding(report_, kHighRatio, directory_.name(entry),
               std::to_string(item.packedSize) + " bytes unpack to " + std::to_string(item.size),
               "RB-1");
  }

  const ZipDirectory& directory_;
  Report& report_;
  std::vector<ItemState> states_;
};

}  // namespace

std::vector<ItemState> checkContainer(const PackageFile& file, const ZipDirectory& directory,
                                      const opc::interfaces::ProgressFunction& progress,
                                      Report& report) {
  return ContainerCheck(directory, report).run(file, progress);
}

}  // namespace opc::checks::detail
