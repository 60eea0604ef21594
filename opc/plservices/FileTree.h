// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "opc/HashIndex.h"
#include "opc/model/Part.h"

namespace opc::plservices {

/// Names a node of a FileTree; valid as long as the tree is, and never reused.
using NodeId = std::uint32_t;

/// Files and folders in memory: names in one block, nodes in one vector, look-up by hash. Knows
/// nothing of packages but the number of a file's part. Names are UTF-8 and taken as they are.
class FileTree {
 public:
  static constexpr NodeId kRoot = 0;
  static constexpr NodeId kNone = 0xFFFFFFFFu;

  FileTree();

  /// Reserves memory for that many nodes.
  void reserve(std::size_t nodes);
  std::size_t size() const { return nodes_.size(); }

  bool isFile(NodeId node) const { return nodes_[node].isFile; }
  std::uint32_t childCount(NodeId node) const { return isFile(node) ? 0 : nodes_[node].number; }
  bool hasChildren(NodeId node) const { return childCount(node) != 0; }
  bool isRemoved(NodeId node) const { return nodes_[node].isRemoved; }
  /// A folder without children that is not the root.
  bool isEmptyFolder(NodeId node) const {
    return node != kRoot && !isFile(node) && !hasChildren(node) && !isRemoved(node);
  }
  NodeId parent(NodeId node) const { return nodes_[node].parent; }
  model::PartId part(NodeId file) const { return nodes_[file].number; }
  /// Followed by a NUL in memory; valid until a node is added.
  std::string_view name(NodeId node) const;
  std::string path(NodeId node) const;

  /// Each kNone when there is none.
  NodeId findChild(NodeId folder, std::string_view name);
  NodeId find(std::string_view path);
  /// How far a path leads: the last node on it that exists, and what is left of the path.
  struct Reach {
    NodeId node;
    std::string_view rest;
  };
  Reach reach(std::string_view path);

  /// The name must not be taken in the folder.
  NodeId addFile(NodeId folder, std::string_view name, model::PartId part);
  NodeId addFolder(NodeId folder, std::string_view name);
  /// Returns the folder at a path, making it and those above it if needed. None may be a file.
  NodeId reachFolder(std::string_view path);
  void setPart(NodeId file, model::PartId part);

  /// A node and all below it, in no order but folders before what is in them.
  std::vector<NodeId> subtree(NodeId node) const;
  /// Takes away a node, not the root, with all below it. The folder above stays.
  void remove(NodeId node);

  /// Children in the order of their names' UTF-16 code units; sorts them when that is due.
  NodeId firstChild(NodeId folder);
  NodeId nextSibling(NodeId node) const { return nodes_[node].nextSibling; }

 private:
  struct Node {
    std::uint64_t nameBegin = 0;
    std::uint32_t nameSize = 0;
    NodeId parent = kNone;
    NodeId firstChild = kNone;
    NodeId nextSibling = kNone;
    std::uint32_t number = 0;  // a file's part; how many children a folder has
    bool isFile = false;
    bool hadFiles = false;
    bool sorted = true;  // its children, and none of them removed
    bool isRemoved = false;
  };
  struct Recent {
    std::uint64_t hash = 0;
    NodeId node = kNone;
  };
  struct SortItem {
    std::uint64_t key;
    NodeId node;
  };

  NodeId add(NodeId folder, std::string_view name, bool isFile, std::uint32_t number);
  NodeId findIndexed(NodeId folder, std::string_view name) const;
  void index(NodeId node);
  void indexFiles();
  void indexRecent();
  void sortChildren(NodeId folder);
  std::size_t commonNamePrefix() const;
  void sortItems();

  std::vector<Node> nodes_;
  std::string names_;
  HashIndex<NodeId> index_;  // by folder and name
  // A listing looks up no files: they are in the index from the first time that one may be meant.
  bool indexesFiles_ = false;
  // Nodes that are not in the index yet: meanwhile the memory that it needs for them arrives.
  std::array<Recent, 8> recent_;
  std::size_t recentCount_ = 0;
  std::vector<SortItem> sortItems_;
};

/// Goes through the files and empty folders at and below a node, depth first, in the order of
/// children. The tree must not change meanwhile. The root itself never comes up.
class TreeWalk {
 public:
  explicit TreeWalk(FileTree& tree, NodeId top = FileTree::kRoot);

  /// Goes to the next one; false at the end.
  bool next();
  NodeId node() const { return node_; }
  /// Its path; valid until next().
  std::string_view path() const { return path_; }

 private:
  void descend();
  bool advance();
  void push(NodeId node);
  void pop();

  FileTree& tree_;
  NodeId top_;
  NodeId node_;
  std::string path_;
  bool started_ = false;
};

}  // namespace opc::plservices
