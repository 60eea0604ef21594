// SPDX-License-Identifier: MIT
#include "opc/plservices/FileTree.h"

#include <algorithm>

#include "opc/CommonLength.h"
#include "opc/Exception.h"
#include "opc/KeyedHash.h"
#include "opc/Text.h"

namespace opc::plservices {
namespace {

// Moves lead bytes so that bytes sort as UTF-16 code units do: surrogate pairs (F0..F4) come before
// U+E000..U+FFFF (EE and EF).
unsigned char codeUnitRank(unsigned char byte) {
  if (byte < 0xEE) return byte;
  return static_cast<unsigned char>(byte < 0xF0 ? byte + 5 : byte - 2);
}

// The first eight bytes as a number that sorts like them. No name holds a NUL, so the padding of a
// short one sorts first.
std::uint64_t sortKey(std::string_view name) {
  std::uint64_t key = 0;
  for (std::size_t i = 0; i < 8; ++i) {
    const unsigned char byte = i < name.size() ? static_cast<unsigned char>(name[i]) : 0;
    key = (key << 8) | codeUnitRank(byte);
  }
  return key;
}

std::uint32_t toNumber(model::PartId part) {
  if (part > 0xFFFFFFFFu) throw Exception(ErrorCode::TooLarge, "package has too many parts");
  return static_cast<std::uint32_t>(part);
}

}  // namespace

FileTree::FileTree() {
  nodes_.emplace_back();
  names_.push_back('\0');
}

void FileTree::reserve(std::size_t nodes) {
  nodes_.reserve(nodes);
}

std::string_view FileTree::name(NodeId node) const {
  const Node& found = nodes_[node];
  return {names_.data() + found.nameBegin, found.nameSize};
}

std::string FileTree::path(NodeId node) const {
  std::size_t size = 0;
  for (NodeId n = node; n != kRoot; n = parent(n)) size += name(n).size() + 1;
  if (size == 0) return {};
  std::string result(size - 1, '/');
  std::size_t end = size - 1;
  for (NodeId n = node; n != kRoot; n = parent(n)) {
    const std::string_view part = name(n);
    std::copy(part.begin(), part.end(),
              result.begin() + static_cast<std::ptrdiff_t>(end) -
                  static_cast<std::ptrdiff_t>(part.size()));
    end -= std::min(end, part.size() + 1);  // and the slash before it
  }
  return result;
}

NodeId FileTree::findIndexed(NodeId folder, std::string_view childName) const {
  const std::uint64_t hash = keyedHash(childName, folder);
  const auto isIt = [this, folder, childName](NodeId node) {
    return parent(node) == folder && name(node) == childName;
  };
  for (const Recent& slot : recent_) {
    if (slot.hash == hash && slot.node != kNone && isIt(slot.node)) return slot.node;
  }
  const NodeId* found = index_.find(hash, isIt);
  return found == nullptr ? kNone : *found;
}

NodeId FileTree::findChild(NodeId folder, std::string_view childName) {
  const NodeId found = findIndexed(folder, childName);
  if (found != kNone || indexesFiles_ || !nodes_[folder].hadFiles) return found;
  indexFiles();
  return findIndexed(folder, childName);
}

FileTree::Reach FileTree::reach(std::string_view path) {
  Reach reached{kRoot, path};
  while (!reached.rest.empty() && !isFile(reached.node)) {
    const std::size_t slash = reached.rest.find('/');
    const NodeId child = findChild(reached.node, reached.rest.substr(0, slash));
    if (child == kNone) break;
    reached.node = child;
    reached.rest.remove_prefix(slash == std::string_view::npos ? reached.rest.size() : slash + 1);
  }
  return reached;
}

NodeId FileTree::reachFolder(std::string_view path) {
  auto [node, rest] = reach(path);
  while (!rest.empty()) {
    const std::size_t slash = rest.find('/');
    node = addFolder(node, rest.substr(0, slash));
    rest.remove_prefix(slash == std::string_view::npos ? rest.size() : slash + 1);
  }
  return node;
}

NodeId FileTree::find(std::string_view path) {
  const Reach reached = reach(path);
  return reached.rest.empty() ? reached.node : kNone;
}

NodeId FileTree::addFile(NodeId folder, std::string_view name, model::PartId part) {
  return add(folder, name, true, toNumber(part));
}

void FileTree::setPart(NodeId file, model::PartId part) {
  nodes_[file].number = toNumber(part);
}

NodeId FileTree::addFolder(NodeId folder, std::string_view name) {
  return add(folder, name, false, 0);
}

NodeId FileTree::add(NodeId folder, std::string_view name, bool isFile, std::uint32_t number) {
  if (nodes_.size() >= kNone) throw Exception(ErrorCode::TooLarge, "file tree is too large");
  Node node;
  node.nameBegin = names_.size();
  node.nameSize = static_cast<std::uint32_t>(name.size());
  node.parent = folder;
  node.nextSibling = nodes_[folder].firstChild;
  node.number = number;
  node.isFile = isFile;
  names_.append(name).push_back('\0');
  const auto id = static_cast<NodeId>(nodes_.size());
  nodes_.push_back(node);
  nodes_[folder].firstChild = id;
  nodes_[folder].sorted = false;
  ++nodes_[folder].number;
  nodes_[folder].hadFiles |= isFile;
  if (!isFile || indexesFiles_) index(id);
  return id;
}

void FileTree::index(NodeId node) {
  const std::uint64_t hash = keyedHash(name(node), parent(node));
  index_.reserve(index_.size() + recent_.size());
  index_.prefetch(hash);
  Recent& slot = recent_[recentCount_++ % recent_.size()];
  if (slot.node != kNone) index_.insert(slot.hash, slot.node);
  slot = {hash, node};
}

void FileTree::indexFiles() {
  index_.reserve(nodes_.capacity());
  for (NodeId node = kRoot; node < nodes_.size(); ++node) {
    if (isFile(node) && !isRemoved(node)) index(node);
  }
  indexesFiles_ = true;
}

void FileTree::indexRecent() {
  for (Recent& slot : recent_) {
    if (slot.node != kNone) index_.insert(slot.hash, slot.node);
    slot = {};
  }
}

std::vector<NodeId> FileTree::subtree(NodeId node) const {
  std::vector<NodeId> found{node};
  for (std::size_t i = 0; i < found.size(); ++i) {
    if (!hasChildren(found[i])) continue;
    for (NodeId n = nodes_[found[i]].firstChild; n != kNone; n = nextSibling(n)) {
      if (!isRemoved(n)) found.push_back(n);
    }
  }
  return found;
}

void FileTree::remove(NodeId node) {
  indexRecent();
  for (const NodeId gone : subtree(node)) {
    index_.erase(keyedHash(name(gone), parent(gone)), [gone](NodeId n) { return n == gone; });
    nodes_[gone].isRemoved = true;
  }
  Node& folder = nodes_[parent(node)];
  --folder.number;
  // It stays in the list until that is asked for: to find its place would take time for each.
  folder.sorted = false;
}

NodeId FileTree::firstChild(NodeId folder) {
  if (!nodes_[folder].sorted) sortChildren(folder);
  return nodes_[folder].firstChild;
}

void FileTree::sortChildren(NodeId folder) {
  sortItems_.clear();
  for (NodeId n = nodes_[folder].firstChild; n != kNone; n = nextSibling(n)) {
    if (!isRemoved(n)) sortItems_.push_back({0, n});
  }
  // New children go to the front, so this is the order in which they came: often the right one.
  std::reverse(sortItems_.begin(), sortItems_.end());
  sortItems();
  NodeId next = kNone;
  for (auto item = sortItems_.rbegin(); item != sortItems_.rend(); ++item) {
    nodes_[item->node].nextSibling = next;
    next = item->node;
  }
  nodes_[folder].firstChild = next;
  nodes_[folder].sorted = true;
}

std::size_t FileTree::commonNamePrefix() const {
  if (sortItems_.empty()) return 0;
  std::string_view first = name(sortItems_.front().node);
  for (const SortItem& item : sortItems_) {
    first = first.substr(0, commonLength(first, name(item.node)));
  }
  return first.size();
}

void FileTree::sortItems() {
  // Names of one folder often begin alike ("file001", "file002"): keys begin where they differ.
  const std::size_t prefix = commonNamePrefix();
  for (SortItem& item : sortItems_) item.key = sortKey(name(item.node).substr(prefix));
  const auto isBefore = [this](const SortItem& a, const SortItem& b) {
    if (a.key != b.key) return a.key < b.key;
    return compareByCodeUnits(name(a.node), name(b.node)) < 0;
  };
  if (!std::is_sorted(sortItems_.begin(), sortItems_.end(), isBefore)) {
    std::sort(sortItems_.begin(), sortItems_.end(), isBefore);
  }
}

TreeWalk::TreeWalk(FileTree& tree, NodeId top)
    : tree_(tree), top_(top), node_(top), path_(tree.path(top)) {}

bool TreeWalk::next() {
  if (started_ && !advance()) return false;
  started_ = true;
  descend();
  return node_ != FileTree::kRoot;
}

void TreeWalk::descend() {
  while (tree_.hasChildren(node_)) push(tree_.firstChild(node_));
}

bool TreeWalk::advance() {
  while (node_ != top_) {
    const NodeId sibling = tree_.nextSibling(node_);
    pop();
    if (sibling != FileTree::kNone) {
      push(sibling);
      return true;
    }
  }
  return false;
}

void TreeWalk::push(NodeId node) {
  if (!path_.empty()) path_.push_back('/');
  path_.append(tree_.name(node));
  node_ = node;
}

void TreeWalk::pop() {
  const std::size_t size = path_.size() - tree_.name(node_).size();
  path_.resize(size == 0 ? 0 : size - 1);
  node_ = tree_.parent(node_);
}

}  // namespace opc::plservices
