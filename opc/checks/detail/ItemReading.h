// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "opc/ByteBuffer.h"
#include "opc/checks/PackageVerification.h"
#include "opc/zippackage/PackageFile.h"
#include "opc/zippackage/ZipDirectory.h"
#include "opc/zippackage/ZipItemReader.h"

namespace opc::checks::detail {

/// What reading an item showed.
struct ItemReading {
  std::exception_ptr failure;       ///< of reading its data
  std::exception_ptr frameFailure;  ///< SystemError of reading what surrounds them
  bool isLeft = false;              ///< it is too large to be read in memory, and was not read
  bool hasSignature = false;        ///< stored data hold what looks like the start of a record
  bool hasPassed = false;           ///< the test of the content
  std::string digest;               ///< SHA-256, in bytes, if it is wanted

  /// Where the item ends; nothing if its headers are faulty, which reading the data has shown.
  std::optional<std::uint64_t> end;
  zippackage::LocalHeader header;    ///< if there is an end
  std::vector<unsigned char> extra;  ///< of the local header
};

/// Reads all of an item, whatever is wrong with it, and throws nothing.
class ItemDataReader {
 public:
  /// All must outlive it.
  ItemDataReader(const zippackage::PackageFile& file, const zippackage::ZipDirectory& directory,
                 const Reading& reading)
      : directory_(directory), reading_(reading), reader_(file, directory) {}

  /// Leaves large items alone, and the data of those that were just packed.
  ItemReading readSmall(std::uint32_t entry) noexcept;
  /// Reads one of any size. What `advance`, which gets numbers of bytes, throws is the failure.
  ItemReading readLarge(std::uint32_t entry,
                        const std::function<void(std::uint64_t)>& advance) noexcept;

 private:
  bool isLarge(std::uint32_t entry) const;
  bool wasJustPacked(std::uint32_t entry) const;
  void readWhole(std::uint32_t entry, ItemReading& reading);
  void readPieces(std::uint32_t entry, const std::function<void(std::uint64_t)>& advance,
                  ItemReading& reading);
  void readFrame(std::uint32_t entry, ItemReading& reading) noexcept;

  const zippackage::ZipDirectory& directory_;
  const Reading& reading_;
  zippackage::ZipItemReader reader_;
  ByteBuffer buffer_;
};

}  // namespace opc::checks::detail
