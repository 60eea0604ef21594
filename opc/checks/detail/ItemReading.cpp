// SPDX-License-Identifier: MIT
#include "opc/checks/detail/ItemReading.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "opc/Exception.h"
#include "opc/signatures/ItemDigests.h"
#include "opc/zippackage/Codec.h"

namespace opc::checks::detail {

using zippackage::ZipEntry;

namespace {

constexpr std::size_t kReadStep = std::size_t{256} << 10;  // bytes

/// Looks for the signature of a record in data that come in pieces.
class SignatureSearch {
 public:
  void look(zippackage::Bytes data) {
    const unsigned char* at = data.data();
    const unsigned char* end = at + data.size();
    while (at != end && !isFound_) {
      if (!isWithinRecord()) {
        at = static_cast<const unsigned char*>(
            std::memchr(at, 'P', static_cast<std::size_t>(end - at)));
        if (at == nullptr) return;
      }
      last_ = (last_ << 8) | *at++;
      if ((last_ >> 16) == kFirstHalf) isFound_ |= isSecondHalf(last_ & 0xFFFF);
    }
  }
  bool isFound() const { return isFound_; }

 private:
  static constexpr std::uint32_t kFirstHalf = 0x504B;  // "PK"

  /// Whether the last bytes may be the first ones of a signature.
  bool isWithinRecord() const {
    return (last_ & 0xFF) == 'P' || (last_ & 0xFFFF) == kFirstHalf ||
           (last_ >> 8 & 0xFFFF) == kFirstHalf;
  }

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

}  // namespace

ItemReading ItemDataReader::readSmall(std::uint32_t entry) noexcept {
  ItemReading reading;
  if (isLarge(entry)) {
    reading.isLeft = true;
    return reading;
  }
  try {
    if (wasJustPacked(entry)) {
      reader_.endOf(entry);  // which checks its headers
      reading.hasPassed = reading_.packed->hasPassed(entry);
    } else {
      readWhole(entry, reading);
    }
  } catch (...) {
    // Another thread reports it, in the order of the items.
    reading.failure = std::current_exception();
  }
  readFrame(entry, reading);
  return reading;
}

ItemReading ItemDataReader::readLarge(std::uint32_t entry,
                                      const std::function<void(std::uint64_t)>& advance) noexcept {
  ItemReading reading;
  try {
    readPieces(entry, advance, reading);
  } catch (...) {
    reading.failure = std::current_exception();
  }
  readFrame(entry, reading);
  return reading;
}

// By the sizes that the directory declares, which have been compared with the size of the file.
bool ItemDataReader::isLarge(std::uint32_t entry) const {
  const ZipEntry& item = directory_.entries()[entry];
  return std::max(item.size, item.packedSize) > zippackage::kWholeLimit;
}

bool ItemDataReader::wasJustPacked(std::uint32_t entry) const {
  const ZipEntry& item = directory_.entries()[entry];
  return reading_.packed != nullptr && reading_.digests == nullptr &&
         reading_.packed->has(entry, {item.size, item.packedSize, item.crc, item.method});
}

void ItemDataReader::readWhole(std::uint32_t entry, ItemReading& reading) {
  reader_.read(entry, buffer_, zippackage::kWholeLimit);
  if (directory_.entries()[entry].method == zippackage::kStored) {
    SignatureSearch search;
    search.look(buffer_.bytes());
    reading.hasSignature = search.isFound();
  }
  reading.hasPassed = reading_.test && reading_.test(buffer_.bytes());
  if (reading_.digests == nullptr) return;
  signatures::Digests digest;
  digest.want(interfaces::Hash::Sha256);
  digest.update(buffer_.bytes());
  reading.digest = digest.of(interfaces::Hash::Sha256);
}

void ItemDataReader::readPieces(std::uint32_t entry,
                                const std::function<void(std::uint64_t)>& advance,
                                ItemReading& reading) {
  const bool isStored = directory_.entries()[entry].method == zippackage::kStored;
  SignatureSearch search;
  signatures::Digests digest;
  if (reading_.digests != nullptr) digest.want(interfaces::Hash::Sha256);
  const std::unique_ptr<InputStream> stream = reader_.open(entry);
  buffer_.resizeForOverwrite(std::max(buffer_.size(), kReadStep));
  while (const std::size_t size = stream->read(buffer_.data(), kReadStep)) {
    if (isStored) search.look({buffer_.data(), size});
    digest.update({buffer_.data(), size});
    advance(size);
  }
  reading.hasSignature = search.isFound();
  reading.digest = digest.of(interfaces::Hash::Sha256);
}

void ItemDataReader::readFrame(std::uint32_t entry, ItemReading& reading) noexcept {
  try {
    const std::uint64_t end = reader_.endOf(entry);
    reading.header = reader_.localHeader(entry);
    const zippackage::Bytes extra = reader_.localExtra(entry);
    reading.extra.assign(extra.begin(), extra.end());
    reading.end = end;
  } catch (const SystemError&) {
    reading.frameFailure = std::current_exception();
  } catch (const Exception&) {
    reading.end.reset();
  } catch (...) {
    reading.frameFailure = std::current_exception();
  }
}

}  // namespace opc::checks::detail
