// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "addon/gallery/Page.h"

namespace addon::gallery::detail {

/// A file or folder, with the totals of everything below it.
struct TreeNode {
  std::string_view name;  ///< "" for the root
  bool isFolder = true;
  std::uint64_t size = 0;
  std::uint64_t files = 0;            ///< 1 for a file
  std::vector<std::size_t> children;  ///< indices: folders first, each kind in the tree's order
};

/// The files of a page as a tree of folders with totals.
class FolderTree {
 public:
  /// `files` must be ordered depth first, as Page has them, and outlive the tree.
  explicit FolderTree(const std::vector<PageFile>& files);

  const TreeNode& root() const { return nodes_.front(); }
  const TreeNode& operator[](std::size_t index) const { return nodes_[index]; }
  std::size_t size() const { return nodes_.size(); }

 private:
  std::size_t add(std::size_t parent, std::string_view name);
  void addPath(const PageFile& file, std::vector<std::size_t>& open);
  void addUp();

  std::vector<TreeNode> nodes_;  ///< parents before their children
};

/// How much of a tree a page lists, to limit its length: all of up to a few thousand entries; of
/// more, the upper folders completely, and the first entries of each folder.
class ListingPlan {
 public:
  static constexpr std::size_t kEntries = 5000;
  static constexpr std::size_t kEntriesOfFolder = 500;  ///< when not everything is listed
  /// Browsers limit how deep elements nest, so deeper folders are shown as totals.
  static constexpr std::size_t kDepth = 32;

  explicit ListingPlan(const FolderTree& tree);

  /// How many of a folder's children are listed, from the first one on.
  std::size_t listed(std::size_t folder) const { return listed_[folder]; }
  bool isComplete() const { return isComplete_; }

 private:
  std::vector<std::size_t> listed_;
  bool isComplete_ = true;
};

}  // namespace addon::gallery::detail
