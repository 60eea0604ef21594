// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

#include "opc/model/Package.h"

namespace opc::plservices {

class FileTree;

/// A file or folder of the tree: a value, valid until the package is closed.
class FileSystemEntry {
 public:
  bool isFile() const;
  /// '/' between names, none at the ends; "" for the root.
  std::u16string getPathName() const;
  std::string path() const;  ///< the same in UTF-8
  std::string name() const;  ///< the last component, UTF-8

  /// Of a file; all zero for a folder.
  model::PartInfo info() const;
  std::uint32_t node() const { return node_; }

 private:
  friend class FileSystemManager;
  FileSystemEntry(const model::Package& package, const FileTree& tree, std::uint32_t node)
      : package_(&package), tree_(&tree), node_(node) {}
  /// Throws InvalidState when the node is removed, or one of a tree that is gone.
  const FileTree& tree() const;

  const model::Package* package_;
  const FileTree* tree_;
  std::uint32_t node_;
};

/// Something where the files of a package lie that is not a file of the tree.
struct UnreadableFile {
  std::string name;  ///< of the part or item, with a leading slash
  std::string why;   ///< without control characters
  std::string line;  ///< both, for people
};

}  // namespace opc::plservices
