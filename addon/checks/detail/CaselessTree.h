// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "opc/plservices/FileSystemManager.h"
#include "opc/plservices/FileTree.h"

namespace addon::checks::detail {

/// UTF-8 text with the case of each character folded, as file systems that ignore case compare
/// names.
std::string foldCase(std::string_view text);

/// The file tree as seen by a file system that ignores case: entries whose paths differ only in
/// case are one.
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
  opc::plservices::NodeId add(const Entry& entry, opc::plservices::NodeId folder,
                              const Visit& visit);

  struct Waiting {
    Entry entry;
    opc::plservices::NodeId folder;  // its parent in nodes_
  };

  opc::plservices::FileTree nodes_;  // of folded names
  std::vector<Entry> entries_;       // by node, the root at 0
  std::vector<Waiting> waiting_;
};

}  // namespace addon::checks::detail
