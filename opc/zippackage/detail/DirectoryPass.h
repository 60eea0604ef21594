// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "opc/LargeBlocks.h"
#include "opc/zippackage/ZipDirectory.h"
#include "opc/zippackage/detail/NameChains.h"

namespace opc::zippackage::detail {

/// Takes the bytes of a directory apart and notes what is wrong with it. A part of ZipDirectory.
class DirectoryPass {
 public:
  explicit DirectoryPass(ZipDirectory& directory) : directory_(directory) {}

  void run();

 private:
  void readEntries();
  void readEntry(std::size_t at, const CentralHeader& header);
  void checkEntry(ZipEntry& entry, const CentralHeader& header);
  void takeName(const ZipEntry& entry, std::string_view name, std::size_t common);
  void checkExtra();
  void checkFields(const ZipEntry& entry, const CentralHeader& header);
  void checkUnicodePath(const ZipEntry& entry, Bytes extra);
  void checkMarks(const ZipEntry& entry, const CentralHeader& header);
  void checkDemands(const CentralHeader& header);
  void readZip64(ZipEntry& entry, const CentralHeader& header);
  void checkMethod(const ZipEntry& entry);
  void checkName(ZipEntry& entry);
  void checkParentSegments(std::string_view name);
  void checkDuplicates();
  void noteTwice(std::uint32_t entry, std::uint32_t other);
  void checkPlaces();
  bool followsClosely(const ZipEntry& entry);
  void checkPlace(std::uint32_t entry, std::uint64_t end);
  void note(ZipFaultKind kind, std::uint64_t first = 0, std::uint64_t second = 0);
  void noteFor(std::uint32_t entry, ZipFaultKind kind, std::uint64_t first, std::uint64_t second);

  ZipDirectory& directory_;
  std::optional<NameChains> chains_;  // as long as the names are in such an order
  std::vector<std::uint64_t, LargeBlockAllocator<std::uint64_t>> hashes_;  // of the names else
  std::uint32_t current_ = 0;
  std::string_view nameBefore_;  // as stored
  bool beforeIsPlain_ = false;
  std::uint32_t farthest_ = kNoEntry;  // the entry that ends last, of those that checkPlace() saw
  std::uint64_t reached_ = 0;          // and where that is
};

}  // namespace opc::zippackage::detail
