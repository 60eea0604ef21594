// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "opc/interfaces/IContentSource.h"
#include "opc/model/Package.h"
#include "opc/plservices/FileTreePart.h"
#include "opc/plservices/LoadedFileTree.h"
#include "opc/plservices/detail/TreePartNames.h"

namespace opc::plservices::detail {

/// Changes the file tree of an open package, and keeps its parts and its table in step. A change
/// that throws changes nothing.
class FileTreeEditor {
 public:
  /// `tree` must be what loadFileTree gave for `package` and `part`.
  FileTreeEditor(model::Package& package, FileTreePart part, std::shared_ptr<LoadedFileTree> tree);

  NodeId addFile(std::unique_ptr<interfaces::IContentSource> source,
                 const model::StandardPartInfo& info, std::string_view path);
  NodeId addFolder(std::string_view path);
  /// Its part keeps its name and its content type.
  void replaceFile(NodeId file, std::unique_ptr<interfaces::IContentSource> source,
                   const model::StandardPartInfo& info);
  /// Moves a node, not the root, with all below it. If reading a file fails, some are moved.
  void move(NodeId node, std::string_view path);
  /// Throws what move() would throw before it changes anything.
  void checkMove(NodeId node, std::string_view path) const;
  /// Removes a node, not the root, with all below it. The folder above stays, empty perhaps.
  void remove(NodeId node);

 private:
  /// What a change does to the table.
  struct TableChange {
    bool touches = false;
    bool needsTable = false;
    std::size_t emptyFolders = 0;
    std::uint64_t size = 0;
  };

  void copyFile(NodeId file, std::string_view path);
  void copyTo(NodeId top, const std::string& path);
  FileTree::Reach requireFree(std::string_view path) const;
  TableChange changeOf(NodeId folder, std::string_view path, bool isFolder, bool inTable) const;
  TableChange changeOfRemoval(NodeId node, const std::vector<NodeId>& subtree) const;
  void storeTable(const TableChange& change);
  NodeId insertFolders(FileTree::Reach& reach);
  /// Adds a file whose part `createPart` makes, for the chosen name and content type.
  template <typename CreatePart>
  NodeId addFileWith(const CreatePart& createPart, std::string_view path);

  model::Package& package_;
  FileTreePart part_;
  std::shared_ptr<LoadedFileTree> tree_;
  TreePartNames names_;
};

}  // namespace opc::plservices::detail
