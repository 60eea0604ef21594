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

/// The file tree as a file system sees it that does not tell cases apart: entries whose paths
/// differ only in case are one.
class CaselessTree {
 public:
  using Entry = opc::plservices::FileSystemEntry;

  /// `visit` is called for every file and folder but the root, folders before what is in them; with
  /// the entry that has the same path but for its case, if another one came before. It may be
  /// empty.
  using Visit = std::function<void(const Entry& entry, const Entry* same)>;
  CaselessTree(opc::plservices::FileSystemManager& files, const Visit& visit);

  /// The path of the entry that has this path but for its case.
  std::optional<std::string> find(std::string_view path) const;

 private:
  opc::plservices::NodeId add(const Entry& entry, opc::plservices::NodeId folder,
                              const Visit& visit);

  struct Waiting {
    Entry entry;
    opc::plservices::NodeId folder;  // in nodes_, of what holds it
  };

  opc::plservices::FileTree nodes_;  // of folded names
  std::vector<Entry> entries_;       // by node, the root at 0
  std::vector<Waiting> waiting_;
};

}  // namespace addon::checks::detail
