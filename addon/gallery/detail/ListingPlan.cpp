// SPDX-License-Identifier: MIT
#include "addon/gallery/detail/ListingPlan.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace addon::gallery::detail {

using NodeId = PageFiles::NodeId;

ListingPlan::ListingPlan(const PageFiles& files) {
  const auto& tree = files.tree();
  const std::size_t most = files.nodes() <= kEntries ? kEntries : kEntriesOfFolder;
  std::size_t left = kEntries;
  std::vector<NodeId> level{PageFiles::kRoot};
  for (std::size_t depth = 0; !level.empty(); ++depth) {
    std::vector<NodeId> next;
    for (const NodeId folder : level) {
      const std::size_t children = tree.childCount(folder);
      const std::size_t count = depth < kDepth ? std::min({children, most, left}) : 0;
      left -= count;
      isComplete_ = isComplete_ && count == children;
      if (count == 0) continue;
      std::vector<NodeId> listed = files.firstChildren(folder, count);
      std::copy_if(listed.begin(), listed.end(), std::back_inserter(next),
                   [&](NodeId node) { return !tree.isFile(node); });
      listed_.emplace(folder, std::move(listed));
    }
    level = std::move(next);
  }
}

const std::vector<NodeId>& ListingPlan::listed(NodeId folder) const {
  static const std::vector<NodeId> kNone;
  const auto found = listed_.find(folder);
  return found == listed_.end() ? kNone : found->second;
}

}  // namespace addon::gallery::detail
