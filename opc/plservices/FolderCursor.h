// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "opc/FileDescriptor.h"
#include "opc/plservices/FileTree.h"

namespace opc::plservices {

/// The folders of a tree on disk, opened one inside the other. Never follows a symbolic link, so
/// that nothing leaves the destination. However deep the tree, few descriptors are open.
class FolderCursor {
 public:
  enum class Missing {
    Make,
    Report,
  };

  /// `destination`, open, stands for the root of the tree. Both must outlive this.
  FolderCursor(const FileTree& tree, int destination, Missing missing);

  /// Opens the folder and those above it. The descriptor stays open until the next call; -1 stands
  /// for a folder that is not there (Missing::Report). Throws Exception, naming it, when a file or
  /// a link is where a folder should be. Going through folders depth first opens each once.
  int enter(NodeId folder);
  /// How many folders below the destination it has opened so far; depth first, each counts once.
  std::size_t opened() const { return opened_; }
  /// The folders that it has made, each after the one that it is in.
  const std::vector<NodeId>& made() const { return made_; }

 private:
  struct Level {
    NodeId node;
    FileDescriptor descriptor;  // none for the root, for missing ones, and when parked
    bool missing = false;
    // Of a parked one, to know it again.
    dev_t device = 0;
    ino_t inode = 0;
  };

  int descriptorOf(std::size_t level) const;
  void leaveLast();
  void push(NodeId node);
  FileDescriptor open(int parent, NodeId node);
  void makeFolder(int parent, NodeId node);
  void parkShallowest();
  void reopenFromBelow(std::size_t level);

  const FileTree& tree_;
  int destination_;
  Missing missing_;
  std::vector<Level> levels_;  // from the root to the current folder
  std::vector<bool> onPath_;   // by node
  std::vector<NodeId> chain_;
  std::vector<NodeId> made_;
  std::size_t opened_ = 0;
  std::size_t firstOpen_ = 1;  // levels before it are parked, apart from the root
};

/// What lies at `name` in `folder`, as a message puts it: "a symbolic link", say.
std::string describeEntry(int folder, const char* name);

}  // namespace opc::plservices
