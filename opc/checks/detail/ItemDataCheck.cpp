// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "opc/ByteBuffer.h"
#include "opc/Exception.h"
#include "opc/checks/PackageFindings.h"
#include "opc/checks/detail/ContainerCheck.h"
#include "opc/checks/detail/FaultFindings.h"
#include "opc/checks/detail/LocalHeaderCheck.h"
#include "opc/interfaces/Progress.h"
#include "opc/plservices/LoadedFileTree.h"
#include "opc/zippackage/Codec.h"
#include "opc/zippackage/ExtraFields.h"
#include "opc/zippackage/ZipItemReader.h"

namespace opc::checks::detail {

using zippackage::PackageFile;
using zippackage::ZipDirectory;
using zippackage::ZipEntry;

namespace {

constexpr std::size_t kReadStep = std::size_t{256} << 10;  // bytes

/// Looks for the signature of a record in data that come in pieces.
class SignatureSearch {
 public:
  void look(zippackage::Bytes data) {
    for (const unsigned char byte : data) {
      last_ = (last_ << 8) | byte;
      if ((last_ >> 16) == kFirstHalf) isFound_ |= isSecondHalf(last_ & 0xFFFF);
    }
  }
  bool isFound() const { return isFound_; }

 private:
  static constexpr std::uint32_t kFirstHalf = 0x504B;  // "PK"

  static bool isSecondHalf(std::uint32_t half) {
    switch (half) {
      case 0x0102:  // an entry of the directory
      case 0x0304:  // a local header
      case 0x0506:  // the end records
      case 0x0606:
      case 0x0607:
      case 0x0608:  // extra data of the archive
      case 0x0708:  // a data descriptor
        return true;
      default:
        return false;
    }
  }

  std::uint32_t last_ = 0;
  bool isFound_ = false;
};

class ItemDataCheck {
 public:
  ItemDataCheck(const PackageFile& file, const ZipDirectory& directory,
                std::vector<ItemState>& states, Report& report)
      : directory_(directory), states_(states), report_(report), reader_(file, directory) {}

  void run(const interfaces::ProgressFunction& progress) {
    const auto order = directory_.physicalOrder();
    if (order.empty()) return;
    progress_ = progress;
    expect(order);
    reached_ = directory_.entries()[order[0]].headerOffset;
    for (const std::uint32_t entry : order) {
      checkItem(entry);
      advance(countOf(entry), 0);
    }
    checkGap(directory_.location().offset);
  }

 private:
  // Declared sizes can be anything, so their sum is bounded.
  void expect(std::span<const std::uint32_t> entries) {
    constexpr std::uint64_t kMost = std::uint64_t{1} << 62;
    for (const std::uint32_t entry : entries) {
      done_.itemsTotal += countOf(entry);
      if (states_[entry].isDamaged) continue;
      const std::uint64_t size = directory_.entries()[entry].size;
      done_.bytesTotal += std::min(size, kMost - done_.bytesTotal);
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
    if (progress_) progress_(done_);
  }

  void checkItem(std::uint32_t entry) {
    const ZipEntry& item = directory_.entries()[entry];
    if (item.headerOffset >= directory_.location().offset) return;
    if (states_[entry].isDamaged) {
      checkGap(item.headerOffset);
      return reach(item.leastEnd(), false);
    }
    checkStart(entry);
    if (states_[entry].isDamaged) return;
    readData(entry);
    const std::optional<std::uint64_t> end = checkFrame(entry);
    reach(end.value_or(item.leastEnd()), end.has_value());
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
    constexpr std::uint64_t kUnseen = zippackage::kMostUnseen;
    if (!isExact) mayReach_ = std::max(mayReach_, end + std::min(kUnseen, UINT64_MAX - end));
    reached_ = std::max(reached_, end);
  }

  void readData(std::uint32_t entry) {
    try {
      drain(entry);
    } catch (const SystemError&) {
      throw;
    } catch (const Exception& fault) {
      states_[entry].isDamaged = true;
      addFault(report_, fault, kDamagedData, directory_.name(entry), "ZP-15");
    }
  }

  bool hasZip64Field(std::uint32_t entry) {
    using zippackage::ExtraFieldWalk;
    return ExtraFieldWalk::find(reader_.localExtra(entry), zippackage::Zip64Extra::kId).has_value();
  }

  // Who reads from the front has to search stored data of unknown size for their end.
  void checkDescriptor(std::uint32_t entry, const zippackage::LocalHeader& header,
                       std::uint64_t end) {
    if ((header.flags & zippackage::kFlagDescriptor) == 0) return;
    const ZipEntry& item = directory_.entries()[entry];
    const bool isSearched = header.method == zippackage::kStored;
    const bool isMistakable = item.crc == zippackage::DataDescriptor::kSignature;
    // Its forms differ in size.
    const std::uint64_t size = end - item.leastEnd() - header.extraLength;
    const bool hasSignature = size % 8 == 0;
    const bool isWide = size > zippackage::DataDescriptor::kMaxNarrowSize;
    const char* why = nullptr;
    if (isSearched && signatures_.isFound()) {
      why =
          "it is stored with a data descriptor, and its data hold what readers may take for the "
          "next record";
    } else if (!hasSignature && (isSearched || isMistakable)) {
      why = "its data descriptor has no signature, by which some readers find it";
    } else if (isWide != hasZip64Field(entry)) {
      why = isWide ? "its data descriptor has 64-bit sizes, and its local header no ZIP64 field"
                   : "its data descriptor has 32-bit sizes, and its local header a ZIP64 field";
    }
    if (why != nullptr) report_.addAmbiguous(kUnusedBytes, directory_.name(entry), why, "ZP-8");
  }

  // By the sizes that the directory declares, which have been compared with the size of the file.
  void drain(std::uint32_t entry) {
    const ZipEntry& item = directory_.entries()[entry];
    const std::uint64_t limit = zippackage::kWholeLimit;
    signatures_ = {};
    if (item.size <= limit && item.packedSize <= limit) {
      reader_.read(entry, buffer_, limit);
      if (item.method == zippackage::kStored) signatures_.look(buffer_.bytes());
      return advance(0, item.size);
    }
    const std::unique_ptr<InputStream> stream = reader_.open(entry);
    buffer_.resizeForOverwrite(std::max(buffer_.size(), kReadStep));
    while (const std::size_t size = stream->read(buffer_.data(), kReadStep)) {
      if (item.method == zippackage::kStored) signatures_.look({buffer_.data(), size});
      advance(0, size);
    }
  }

  // Checks what surrounds the data. Returns where the item ends; nothing if the headers are faulty,
  // which reading the data has reported.
  std::optional<std::uint64_t> checkFrame(std::uint32_t entry) {
    try {
      const std::uint64_t end = reader_.endOf(entry);
      const zippackage::LocalHeader header = reader_.localHeader(entry);
      checkLocalHeader(directory_, entry, header, reader_.localExtra(entry), report_);
      checkDescriptor(entry, header, end);
      return end;
    } catch (const SystemError&) {
      throw;
    } catch (const Exception&) {
      return std::nullopt;
    }
  }

  const ZipDirectory& directory_;
  std::vector<ItemState>& states_;
  Report& report_;
  zippackage::ZipItemReader reader_;
  ByteBuffer buffer_;
  SignatureSearch signatures_;  // in the data of the last item, if it is stored
  interfaces::ProgressFunction progress_;
  interfaces::Progress done_;
  std::uint64_t reached_ = 0;   // the least offset at which the items so far end
  std::uint64_t mayReach_ = 0;  // the largest, if some of them are damaged
};

}  // namespace

void checkItemData(const PackageFile& file, const ZipDirectory& directory,
                   const interfaces::ProgressFunction& progress, std::vector<ItemState>& states,
                   Report& report) {
  ItemDataCheck(file, directory, states, report).run(progress);
}

}  // namespace opc::checks::detail
