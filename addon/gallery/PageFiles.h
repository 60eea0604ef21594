// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "opc/plservices/FileTree.h"

namespace addon::gallery {

/// The files that a page shows: the tree of a package, with the totals of its folders. The tree
/// must outlive this and stay as it is.
class PageFiles {
 public:
  using NodeId = opc::plservices::NodeId;
  static constexpr NodeId kRoot = opc::plservices::FileTree::kRoot;

  /// Of a file, or of all files below a folder.
  struct Totals {
    std::uint64_t size = 0;
    std::uint32_t files = 0;  ///< 1 for a file
  };

  /// No files, and no tree.
  PageFiles() = default;
  PageFiles(opc::plservices::FileTree& tree,
            const std::function<std::uint64_t(opc::model::PartId)>& sizeOf);

  bool empty() const { return nodes_ == 1; }
  /// How many files and folders there are, the root included.
  std::size_t nodes() const { return nodes_; }
  std::uint64_t emptyFolders() const { return emptyFolders_; }
  const Totals& totals(NodeId node) const { return totals_[node]; }
  /// The ids of all nodes are below this.
  std::size_t endOfIds() const { return totals_.size(); }

  /// Must not be called when empty.
  opc::plservices::FileTree& tree() const { return *tree_; }
  /// The first children of a folder, at most `most`: folders first, each kind in the tree's order.
  std::vector<NodeId> firstChildren(NodeId folder, std::size_t most) const;

 private:
  opc::plservices::FileTree* tree_ = nullptr;
  std::vector<Totals> totals_{1};
  std::size_t nodes_ = 1;
  std::uint64_t emptyFolders_ = 0;
};

}  // namespace addon::gallery
