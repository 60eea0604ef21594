// SPDX-License-Identifier: MIT
#include "addon/gallery/PageFiles.h"

namespace addon::gallery {

using opc::plservices::FileTree;

PageFiles::PageFiles(FileTree& tree, const std::function<std::uint64_t(opc::model::PartId)>& sizeOf)
    : tree_(&tree), totals_(tree.size()) {
  // Every node comes after the folder that it is in.
  for (auto node = static_cast<NodeId>(tree.size()); --node > kRoot;) {
    if (tree.isRemoved(node)) continue;
    ++nodes_;
    if (tree.isFile(node)) totals_[node] = {sizeOf(tree.part(node)), 1};
    if (tree.isEmptyFolder(node)) ++emptyFolders_;
    Totals& above = totals_[tree.parent(node)];
    above.size += totals_[node].size;
    above.files += totals_[node].files;
  }
}

std::vector<PageFiles::NodeId> PageFiles::firstChildren(NodeId folder, std::size_t most) const {
  std::vector<NodeId> children;
  for (const bool isFile : {false, true}) {
    for (NodeId node = tree_->firstChild(folder); node != FileTree::kNone && children.size() < most;
         node = tree_->nextSibling(node)) {
      if (tree_->isFile(node) == isFile) children.push_back(node);
    }
  }
  return children;
}

}  // namespace addon::gallery
