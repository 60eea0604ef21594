// SPDX-License-Identifier: MIT
#include "addon/gallery/detail/ListingPlan.h"

#include <algorithm>

namespace addon::gallery::detail {

namespace {

/// Removes the first name and the '/' after it from `rest`, and returns the name.
std::string_view takeName(std::string_view& rest) {
  const std::size_t end = std::min(rest.find('/'), rest.size());
  const std::string_view name = rest.substr(0, end);
  rest.remove_prefix(std::min(end + 1, rest.size()));
  return name;
}

}  // namespace

FolderTree::FolderTree(const std::vector<PageFile>& files) : nodes_(1) {
  std::vector<std::size_t> open{0};
  for (const PageFile& file : files) addPath(file, open);
  addUp();
  for (TreeNode& node : nodes_) {
    std::stable_partition(node.children.begin(), node.children.end(),
                          [&](std::size_t child) { return nodes_[child].isFolder; });
  }
}

std::size_t FolderTree::add(std::size_t parent, std::string_view name) {
  const std::size_t index = nodes_.size();
  nodes_.emplace_back().name = name;
  nodes_[parent].children.push_back(index);
  return index;
}

/// `open` holds the last entry and the folders above it, beginning with the root.
void FolderTree::addPath(const PageFile& file, std::vector<std::size_t>& open) {
  std::string_view rest = file.path;
  std::size_t depth = 1;
  std::string_view name = takeName(rest);
  while (depth < open.size() && nodes_[open[depth]].isFolder && nodes_[open[depth]].name == name &&
         !rest.empty()) {
    ++depth;
    name = takeName(rest);
  }
  open.resize(depth);
  open.push_back(add(open.back(), name));
  while (!rest.empty()) open.push_back(add(open.back(), takeName(rest)));
  TreeNode& node = nodes_[open.back()];
  node.isFolder = file.isFolder;
  node.size = file.size;
  node.files = file.isFolder ? 0 : 1;
}

void FolderTree::addUp() {
  for (std::size_t i = nodes_.size(); i-- > 0;) {
    for (const std::size_t child : nodes_[i].children) {
      nodes_[i].size += nodes_[child].size;
      nodes_[i].files += nodes_[child].files;
    }
  }
}

ListingPlan::ListingPlan(const FolderTree& tree) : listed_(tree.size(), 0) {
  const std::size_t most = tree.size() <= kEntries ? kEntries : kEntriesOfFolder;
  std::size_t left = kEntries;
  std::vector<std::size_t> level{0};
  for (std::size_t depth = 0; !level.empty(); ++depth) {
    std::vector<std::size_t> next;
    for (const std::size_t folder : level) {
      const auto& children = tree[folder].children;
      listed_[folder] = depth < kDepth ? std::min({children.size(), most, left}) : 0;
      left -= listed_[folder];
      isComplete_ = isComplete_ && listed_[folder] == children.size();
      for (std::size_t i = 0; i < listed_[folder]; ++i) {
        if (tree[children[i]].isFolder) next.push_back(children[i]);
      }
    }
    level = std::move(next);
  }
}

}  // namespace addon::gallery::detail
