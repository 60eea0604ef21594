// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstdint>
#include <exception>
#include <iterator>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "opc/Exception.h"
#include "opc/checks/PackageFindings.h"
#include "opc/checks/detail/ContainerCheck.h"
#include "opc/checks/detail/FaultFindings.h"
#include "opc/checks/detail/ItemReading.h"
#include "opc/checks/detail/LocalHeaderCheck.h"
#include "opc/interfaces/Progress.h"
#include "opc/interfaces/WorkAhead.h"
#include "opc/plservices/LoadedFileTree.h"
#include "opc/signatures/ItemDigests.h"
#include "opc/zippackage/Codec.h"
#include "opc/zippackage/ExtraFields.h"

namespace opc::checks::detail {

using zippackage::PackageFile;
using zippackage::ZipDirectory;
using zippackage::ZipEntry;

namespace {

class ItemDataCheck {
 public:
  ItemDataCheck(const PackageFile& file, const ZipDirectory& directory, Reading& reading,
                std::vector<ItemState>& states, Report& report)
      : file_(file), directory_(directory), reading_(reading), states_(states), report_(report) {}

  void run() {
    const auto order = directory_.physicalOrder();
    if (order.empty()) return;
    expect(order);
    std::vector<std::uint32_t> read;
    std::copy_if(order.begin(), order.end(), std::back_inserter(read),
                 [this](std::uint32_t entry) { return isRead(entry); });
    Readings readings(
        read.size(), interfaces::kReadBatches, [&](std::size_t i) { return effortOf(read[i]); },
        [&] { return readerOf(read); }, reading_.starter);
    reached_ = directory_.entries()[order[0]].headerOffset;
    for (const std::uint32_t entry : order) {
      checkItem(entry, readings);
      advance(countOf(entry), 0);
    }
    checkGap(directory_.location().offset);
  }

 private:
  using Readings = interfaces::WorkAhead<std::vector<ItemReading>>;

  /// What is read, whatever turns out about the items before it.
  bool isRead(std::uint32_t entry) const {
    return directory_.entries()[entry].headerOffset < directory_.location().offset &&
           !states_[entry].isDamaged;
  }

  std::uint64_t effortOf(std::uint32_t entry) const {
    const ZipEntry& item = directory_.entries()[entry];
    return item.size > zippackage::kWholeLimit ? 0 : item.size;
  }

  Readings::Worker readerOf(const std::vector<std::uint32_t>& entries) const {
    auto reader = std::make_shared<ItemDataReader>(file_, directory_, reading_);
    return [reader, &entries](std::size_t i, std::vector<ItemReading>& readings) {
      readings.push_back(reader->readSmall(entries[i]));
    };
  }

  // Declared sizes can be anything, so their sum is bounded.
  void expect(std::span<const std::uint32_t> entries) {
    constexpr std::uint64_t kMaxTotal = std::uint64_t{1} << 62;
    for (const std::uint32_t entry : entries) {
      done_.itemsTotal += countOf(entry);
      if (states_[entry].isDamaged) continue;
      const std::uint64_t size = directory_.entries()[entry].size;
      done_.bytesTotal += std::min(size, kMaxTotal - done_.bytesTotal);
    }
  }

  /// Of an add-on, the progress counts files and not the parts that describe them.
  std::uint64_t countOf(std::uint32_t entry) const {
    return report_.subject() == Subject::Package ||
           directory_.name(entry).starts_with(plservices::kFilesFolder);
  }

  void advance(std::uint64_t items, std::uint64_t bytes) {
    done_.itemsDone += items;
    done_.bytesDone += bytes;
    if (reading_.progress) reading_.progress(done_);
  }

  void checkItem(std::uint32_t entry, Readings& readings) {
    const ZipEntry& item = directory_.entries()[entry];
    if (item.headerOffset >= directory_.location().offset) return;
    if (states_[entry].isDamaged) {
      checkGap(item.headerOffset);
      return reach(item.leastEnd(), false);
    }
    const auto [batch, at] = readings.take();
    const ItemReading reading = std::move(batch[at]);
    checkStart(entry);
    if (states_[entry].isDamaged) return;
    check(entry, reading.isLeft ? readLarge(entry) : reading);
  }

  ItemReading readLarge(std::uint32_t entry) {
    if (!reader_) reader_.emplace(file_, directory_, reading_);
    return reader_->readLarge(entry, [this](std::uint64_t size) { advance(0, size); });
  }

  void check(std::uint32_t entry, const ItemReading& reading) {
    const ZipEntry& item = directory_.entries()[entry];
    checkData(entry, reading);
    if (reading.frameFailure) std::rethrow_exception(reading.frameFailure);
    if (reading.end) checkFrame(entry, reading);
    reach(reading.end.value_or(item.leastEnd()), reading.end.has_value());
  }

  // The directory does not show where an item ends, so an overlap may become visible only now.
  void checkStart(std::uint32_t entry) {
    const std::uint64_t start = directory_.entries()[entry].headerOffset;
    if (start >= reached_) return checkGap(start);
    states_[entry].isDamaged = true;
    report_.addClipped(kOverlappingItems, directory_.name(entry),
                       "it begins at offset " + std::to_string(start) +
                           ", before the end of another item at " + std::to_string(reached_),
                       "RB-2");
  }

  void checkGap(std::uint64_t until) {
    if (until <= std::max(reached_, mayReach_)) return;
    report_.addAmbiguous(kUnusedBytes, "",
                         std::to_string(until - reached_) + " bytes at offset " +
                             std::to_string(reached_) + " belong to no item",
                         "ZP-16");
  }

  void reach(std::uint64_t end, bool isExact) {
    constexpr std::uint64_t kUnseen = zippackage::kMaxUnseen;
    if (!isExact) mayReach_ = std::max(mayReach_, end + std::min(kUnseen, UINT64_MAX - end));
    reached_ = std::max(reached_, end);
  }

  void checkData(std::uint32_t entry, const ItemReading& reading) {
    try {
      if (reading.failure) std::rethrow_exception(reading.failure);
      reading_.passed[entry] = reading.hasPassed;
      if (reading_.digests != nullptr) reading_.digests->set(entry, reading.digest);
      if (effortOf(entry) != 0) advance(0, effortOf(entry));
    } catch (const SystemError&) {
      throw;
    } catch (const Exception& fault) {
      states_[entry].isDamaged = true;
      addFault(report_, fault, kDamagedData, directory_.name(entry), "ZP-15");
    }
  }

  static bool hasZip64Field(zippackage::Bytes extra) {
    return zippackage::ExtraFieldWalk::find(extra, zippackage::Zip64Extra::kId).has_value();
  }

  // Programs that read from the front have to search stored data of unknown size for their end.
  void checkDescriptor(std::uint32_t entry, const ItemReading& reading) {
    const zippackage::LocalHeader& header = reading.header;
    if ((header.flags & zippackage::kFlagDescriptor) == 0) return;
    const ZipEntry& item = directory_.entries()[entry];
    const bool isSearched = header.method == zippackage::kStored;
    const bool isMistakable = item.crc == zippackage::DataDescriptor::kSignature;
    // Its forms differ in size.
    const std::uint64_t size = *reading.end - item.leastEnd() - header.extraLength;
    const bool hasSignature = size % 8 == 0;
    const bool isWide = size > zippackage::DataDescriptor::kMaxNarrowSize;
    const char* why = nullptr;
    if (isSearched && reading.hasSignature) {
      why =
          "it is stored with a data descriptor, and its data hold what readers may take for the "
          "next record";
    } else if (!hasSignature && (isSearched || isMistakable)) {
      why = "its data descriptor has no signature, by which some readers find it";
    } else if (isWide && item.size == 0 && !isSearched) {
      // Readers that expect 32-bit sizes find the right ones, and then no further item.
      why = "its data descriptor has 64-bit sizes, and it is empty";
    } else if (isWide != hasZip64Field(reading.extra)) {
      why = isWide ? "its data descriptor has 64-bit sizes, and its local header no ZIP64 field"
                   : "its data descriptor has 32-bit sizes, and its local header a ZIP64 field";
    }
    if (why != nullptr) report_.addAmbiguous(kUnusedBytes, directory_.name(entry), why, "ZP-8");
  }

  // What surrounds the data.
  void checkFrame(std::uint32_t entry, const ItemReading& reading) {
    checkLocalHeader(directory_, entry, reading.header, reading.extra, report_);
    checkDescriptor(entry, reading);
  }

  const PackageFile& file_;
  const ZipDirectory& directory_;
  Reading& reading_;
  std::vector<ItemState>& states_;
  Report& report_;
  std::optional<ItemDataReader> reader_;  // of large items
  interfaces::Progress done_;
  std::uint64_t reached_ = 0;   // the least offset at which the items so far end
  std::uint64_t mayReach_ = 0;  // the largest, if some of them are damaged
};

}  // namespace

void checkItemData(const PackageFile& file, const ZipDirectory& directory, Reading& reading,
                   std::vector<ItemState>& states, Report& report) {
  reading.passed.assign(states.size(), false);
  if (reading.digests != nullptr) reading.digests->begin(states.size());
  ItemDataCheck(file, directory, reading, states, report).run();
}

}  // namespace opc::checks::detail
