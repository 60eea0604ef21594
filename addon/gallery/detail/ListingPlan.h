// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <unordered_map>
#include <vector>

#include "addon/gallery/PageFiles.h"

namespace addon::gallery::detail {

/// How much of a tree a page lists, to limit its length: all of up to a few thousand entries; of
/// more, the upper folders completely, and the first entries of each folder.
class ListingPlan {
 public:
  static constexpr std::size_t kEntries = 5000;
  static constexpr std::size_t kEntriesOfFolder = 500;  ///< when not everything is listed
  /// Browsers limit how deep elements nest, so deeper folders are shown as totals.
  static constexpr std::size_t kDepth = 32;

  /// There must be a file or a folder.
  explicit ListingPlan(const PageFiles& files);

  /// The children of a folder that are listed, folders first.
  const std::vector<PageFiles::NodeId>& listed(PageFiles::NodeId folder) const;
  bool isComplete() const { return isComplete_; }

 private:
  std::unordered_map<PageFiles::NodeId, std::vector<PageFiles::NodeId>> listed_;
  bool isComplete_ = true;
};

}  // namespace addon::gallery::detail
