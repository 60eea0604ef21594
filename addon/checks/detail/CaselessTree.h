// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "opc/HashIndex.h"
#include "opc/plservices/FileSystemManager.h"
#include "opc/plservices/FileTree.h"

namespace addon::checks::detail {

/// UTF-8 text with the case of each character folded, as file systems that ignore case compare
/// names.
std::string foldCase(std::string_view text);

/// The file tree as seen by a file system that ignores case: entries whose paths differ only in
/// case are one. The tree must not change meanwhile.
class CaselessTree {
 public:
  using Entry = opc::plservices::FileSystemEntry;

  /// Calls `visit` for every file and folder except the root, folders before their content. `same`
  /// is an earlier entry whose path differs only in case, or null. `visit` may be empty.
  using Visit = std::function<void(const Entry& entry, const Entry* same)>;
  CaselessTree(opc::plservices::FileSystemManager& files, const Visit& visit);

  /// The path of the entry with this path, ignoring case.
  std::optional<std::string> find(std::string_view path) const;

 private:
  using NodeId = opc::plservices::NodeId;

  void add(NodeId node, const Visit& visit);
  NodeId findIn(NodeId folder, std::string_view foldedName) const;

  // A package may have millions of folders: besides the tree this takes little for each.
  opc::plservices::FileSystemManager& files_;
  opc::plservices::FileTree& tree_;
  std::vector<NodeId> first_;     // by node: the first with that path, whatever the case
  opc::HashIndex<NodeId> index_;  // of those, by the first folder and the folded name
};

}  // namespace addon::checks::detail
