// SPDX-License-Identifier: MIT
#include "opc/checks/detail/LocalHeaderCheck.h"

#include <string>
#include <string_view>

#include "opc/checks/PackageFindings.h"
#include "opc/zippackage/ExtraFields.h"
#include "opc/zippackage/HeaderMarks.h"

namespace opc::checks::detail {

using zippackage::Bytes;
using zippackage::ExtraFault;
using zippackage::ExtraFieldWalk;
using zippackage::LocalHeader;
using zippackage::MarkFault;
using zippackage::Zip64Extra;
using zippackage::ZipDirectory;
using zippackage::ZipEntry;

namespace {

constexpr std::size_t kBothSizes = 16;  // bytes of a ZIP64 field

class LocalHeaderCheck {
 public:
  LocalHeaderCheck(const ZipDirectory& directory, std::size_t entry, const LocalHeader& header,
                   Bytes extra, Report& report)
      : directory_(directory),
        number_(entry),
        entry_(directory.entries()[entry]),
        name_(directory.name(entry)),
        header_(header),
        extra_(extra),
        report_(report) {}

  void run() {
    checkDemands();
    checkDescriptor();
    checkZip64();
    checkBesideEarlierRecord();
    const ExtraFault fault = ExtraFieldWalk::faultOf(extra_);
    if (fault != ExtraFault::None) {
      report_.addAmbiguous(kUnusedBytes, name_, local(zippackage::describe(fault)), "ZP-16");
    }
    if (zippackage::otherUnicodePath(name_, extra_)) {
      add(kOtherUnicodePath, local(zippackage::describeUnicodePath(name_, extra_)), "ZP-3");
    }
    const MarkFault mark = zippackage::markFaultOfFields(name_, extra_);
    if (mark != MarkFault::None) {
      add(kContradictingMarks, local(zippackage::describe(mark)), "ZP-10");
    }
  }

 private:
  static std::string local(const std::string& text) { return "its local header " + text; }

  void add(FindingId id, const std::string& message, const char* rule) {
    report_.addClipped(id, name_, message, rule);
  }

  bool hasDescriptor() const { return (header_.flags & zippackage::kFlagDescriptor) != 0; }

  void checkDemands() {
    if (!zippackage::isUsualVersion(header_.versionNeeded)) {
      add(kUnusualDemands, local(zippackage::describeVersion(header_.versionNeeded)), "ZP-11");
    }
    if ((header_.flags & zippackage::kReservedFlags) != 0) {
      add(kUnusualDemands, local(zippackage::describeFlags(header_.flags)), "ZP-11");
    }
  }

  void checkDescriptor() {
    if (((header_.flags ^ entry_.flags) & zippackage::kFlagDescriptor) != 0) {
      add(kHeadersDisagree, "only one of its headers announces a data descriptor", "ZP-7");
    } else if (hasDescriptor() && isHalfSet()) {
      add(kHeadersDisagree, local("has a checksum, but not the sizes"), "ZP-7");
    }
  }

  struct Sizes {
    std::uint64_t size;
    std::uint64_t packedSize;
    bool operator==(const Sizes&) const = default;
  };

  Sizes sizes() const {
    Zip64Extra wide = Zip64Extra::neededBy(header_);
    if (const auto field = ExtraFieldWalk::find(extra_, Zip64Extra::kId)) wide.decode(*field);
    return {wide.size.value_or(header_.size), wide.packedSize.value_or(header_.packedSize)};
  }

  bool hasSizes() const { return sizes() == Sizes{entry_.size, entry_.packedSize}; }

  // A writer that knows the checksum knows the sizes, too. Reading has compared those values that
  // are there with the directory.
  bool isHalfSet() const { return header_.crc != 0 && !hasSizes(); }

  // What makes libzip prefer another end record, if there is one. Nothing else depends on it.
  void checkBesideEarlierRecord() {
    if (!directory_.location().hasEarlierRecord) return;
    const zippackage::CentralHeader central = directory_.header(number_);
    const char* why = nullptr;
    if (header_.dosTime != central.dosTime) {
      why = "its headers give different times";
    } else if (header_.versionNeeded > central.versionNeeded) {
      why = "its local header needs a higher version than the directory says";
    } else if ((header_.crc != 0 || sizes() != Sizes{}) &&
               (header_.crc != entry_.crc || !hasSizes())) {
      why = "its local header has only some of its sizes and checksum";
    } else if (!hasUsualZip64()) {
      why = "its local header has a ZIP64 field that is not for both sizes";
    }
    if (why == nullptr) return;
    add(kHeadersDisagree,
        std::string(why) +
            ", so that some readers take an earlier end record, within an item's data",
        "ZP-7");
  }

  bool hasUsualZip64() const {
    const auto field = ExtraFieldWalk::find(extra_, Zip64Extra::kId);
    if (!field) return true;
    const Zip64Extra needed = Zip64Extra::neededBy(header_);
    return needed.size && needed.packedSize && field->size() == kBothSizes;
  }

  // A local header that announces a descriptor may hold zeros instead of the values.
  void checkZip64() {
    Zip64Extra needed = Zip64Extra::neededBy(header_);
    const bool isNeeded = needed.size || needed.packedSize;
    const auto field = ExtraFieldWalk::find(extra_, Zip64Extra::kId);
    if (isNeeded && (!field || !Zip64Extra(needed).decode(*field))) {
      return add(kInconsistentRecords, local("refers to a ZIP64 value that it does not have"),
                 "ZP-9");
    }
    if (!field) return;
    const Zip64Extra actual{entry_.size, entry_.packedSize, entry_.headerOffset, 0};
    const Zip64Extra unset{0, 0, 0, 0};
    const Zip64Extra half{entry_.size, 0, 0, 0};
    if (actual.agrees(*field, needed)) return;
    if (hasDescriptor() && (unset.agrees(*field, needed) || half.agrees(*field, needed))) return;
    report_.addAmbiguous(kUnusedBytes, name_,
                         local("has a ZIP64 field with other values than it calls for"), "ZP-9");
  }

  const ZipDirectory& directory_;
  std::size_t number_;
  const ZipEntry& entry_;
  std::string_view name_;
  const LocalHeader& header_;
  Bytes extra_;
  Report& report_;
};

}  // namespace

void checkLocalHeader(const ZipDirectory& directory, std::size_t entry, const LocalHeader& header,
                      Bytes extra, Report& report) {
  LocalHeaderCheck(directory, entry, header, extra, report).run();
}

}  // namespace opc::checks::detail
