// SPDX-License-Identifier: MIT
#include "opc/plservices/detail/ExtractionPlan.h"

#include <climits>
#include <limits>

#include "opc/Exception.h"

namespace opc::plservices::detail {
namespace {

std::uint64_t saturatingAdd(std::uint64_t a, std::uint64_t b) {
  return b > std::numeric_limits<std::uint64_t>::max() - a
             ? std::numeric_limits<std::uint64_t>::max()
             : a + b;
}

class Planner {
 public:
  Planner(const model::Package& package, FileTree& tree)
      : package_(package), tree_(tree), chosen_(tree.size()), checked_(tree.size()) {}

  ExtractionPlan plan(const std::vector<NodeId>& chosen) {
    for (const NodeId node : chosen) chosen_[node] = true;
    std::vector<bool> planned(tree_.size());
    for (const NodeId node : chosen) {
      if (planned[node] || isInsideChosen(node)) continue;
      planned[node] = true;
      addAllBelow(node);
    }
    return std::move(plan_);
  }

 private:
  bool isInsideChosen(NodeId node) const {
    while (node != FileTree::kRoot) {
      node = tree_.parent(node);
      if (chosen_[node]) return true;
    }
    return false;
  }

  void addAllBelow(NodeId top) {
    for (TreeWalk walk(tree_, top); walk.next();) addLeaf(walk.node());
  }

  void addLeaf(NodeId leaf) {
    for (NodeId node = leaf; node != FileTree::kRoot && !checked_[node];
         node = tree_.parent(node)) {
      checkName(node);
      plan_.folders += tree_.isFile(node) ? 0 : 1;
      checked_[node] = true;
    }
    const bool isFile = tree_.isFile(leaf);
    const std::uint64_t size = isFile ? package_.partInfo(tree_.part(leaf)).size : 0;
    plan_.leaves.push_back(leaf);
    plan_.sizes.push_back(size);
    plan_.files += isFile ? 1 : 0;
    plan_.bytes = saturatingAdd(plan_.bytes, size);
  }

  void checkName(NodeId node) const {
    if (tree_.name(node).size() <= NAME_MAX) return;
    throw Exception(ErrorCode::InvalidName, "cannot extract '" + tree_.path(node) +
                                                "': its name has " +
                                                std::to_string(tree_.name(node).size()) +
                                                " bytes, more than " + std::to_string(NAME_MAX));
  }

  const model::Package& package_;
  FileTree& tree_;
  std::vector<bool> chosen_;
  std::vector<bool> checked_;
  ExtractionPlan plan_;
};

}  // namespace

std::uint64_t ExtractionPlan::bytesOnDisk(std::uint64_t blockSize) const {
  std::uint64_t sum = folders * blockSize;
  for (const std::uint64_t size : sizes) {
    const std::uint64_t blocks = size / blockSize + (size % blockSize == 0 ? 0 : 1);
    const bool fits = blocks <= std::numeric_limits<std::uint64_t>::max() / blockSize;
    sum = saturatingAdd(sum, fits ? blocks * blockSize : std::numeric_limits<std::uint64_t>::max());
  }
  return sum;
}

ExtractionPlan planExtraction(const model::Package& package, FileTree& tree,
                              const std::vector<NodeId>& chosen) {
  return Planner(package, tree).plan(chosen);
}

}  // namespace opc::plservices::detail
