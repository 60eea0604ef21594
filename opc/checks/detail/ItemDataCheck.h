// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "opc/ByteBuffer.h"
#include "opc/checks/detail/ContainerCheck.h"
#include "opc/interfaces/Progress.h"
#include "opc/zippackage/ZipItemReader.h"

namespace opc::checks::detail {

/// Reads every item once, in physical order and in constant memory. Findings 105, 106, 107, 109 and
/// 113. Skips items that are already known to be damaged, so that no byte is read for two items.
class ItemDataCheck {
 public:
  ItemDataCheck(const zippackage::PackageFile& file, const zippackage::ZipDirectory& directory,
                std::vector<ItemState>& states, Report& report)
      : directory_(directory), states_(states), report_(report), reader_(file, directory) {}

  /// Marks the items that turn out to be damaged. `progress` may be empty.
  void run(const interfaces::ProgressFunction& progress);

 private:
  void expect(std::span<const std::uint32_t> entries);
  void advance(std::uint64_t items, std::uint64_t bytes);
  void checkItem(std::uint32_t entry);
  void checkStart(std::uint32_t entry);
  void checkGap(std::uint64_t until);
  void readData(std::uint32_t entry);
  void drain(std::uint32_t entry);
  void reach(std::uint64_t end, bool isExact);
  std::optional<std::uint64_t> checkFrame(std::uint32_t entry);
  void checkExtra(std::uint32_t entry);

  const zippackage::ZipDirectory& directory_;
  std::vector<ItemState>& states_;
  Report& report_;
  zippackage::ZipItemReader reader_;
  ByteBuffer buffer_;
  interfaces::ProgressFunction progress_;
  interfaces::Progress done_;
  std::uint64_t reached_ = 0;   // the least offset at which the items so far end
  std::uint64_t mayReach_ = 0;  // the largest, if some of them are damaged
};

}  // namespace opc::checks::detail
