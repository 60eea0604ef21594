// SPDX-License-Identifier: MIT
#include "opc/plservices/LoadedFileTree.h"

#include <algorithm>
#include <optional>
#include <unordered_set>

#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/plservices/TreePath.h"

namespace opc::plservices {
namespace {

class TreeLoader {
 public:
  explicit TreeLoader(model::Package& package)
      : package_(package), mostTableNodes_(maxTableNodes(package.physical().fileSize())) {}

  LoadedFileTree load(FileTreePart& tablePart) {
    tree_.nodes.reserve(package_.physical().itemCount() + 1);
    FileTreeTable table;
    withContext(tablePart, [&] {
      if (tablePart.exists()) table = tablePart.read();
      for (const FileTreeTable::File& file : table.files) {
        countTableNodes([&] { addTableFile(file); });
      }
    });
    package_.visitParts(kFilesFolder, [this](model::PartId part) { addPart(part); });
    addOtherItems(package_.strayItems(), "it is not a part");
    addOtherItems(package_.untypedItems(), "it has no content type");
    withContext(tablePart, [&] {
      for (const std::string& folder : table.folders) {
        countTableNodes([&] { addTableFolder(folder); });
      }
    });
    for (NodeId node = 0; node < tree_.nodes.size(); ++node) countEmptyFolder(node);
    return std::move(tree_);
  }

 private:
  template <typename Action>
  static void withContext(const FileTreePart& part, const Action& action) {
    inContext([&] { return "part '" + part.name().canonical() + "'"; }, action);
  }

  template <typename Action>
  void countTableNodes(const Action& add) {
    const std::size_t before = tree_.nodes.size();
    add();
    tree_.nodesOfStoredTable += tree_.nodes.size() - before;
    if (tree_.nodesOfStoredTable <= mostTableNodes_) return;
    throw FormatError("RB-7",
                      "it makes more than " + std::to_string(mostTableNodes_) +
                          " files and folders, the limit for a package of this size",
                      ErrorCode::TooLarge);
  }

  // Both return why not, or nothing.
  std::optional<std::string> makeFolders(std::string_view path);
  std::optional<std::string> insertFile(std::string_view path, model::PartId part);

  void addTableFile(const FileTreeTable::File& file);
  void addTableFolder(const std::string& path);
  void addPart(model::PartId part);
  void addOtherItems(const std::vector<std::string>& names, const char* why);
  void addUnreadable(std::string_view itemName, const std::string& why);
  void noteUnreadable(std::string_view kind, std::string_view itemName, const std::string& why);
  void countEmptyFolder(NodeId node);

  model::Package& package_;
  std::uint64_t mostTableNodes_;
  LoadedFileTree tree_;
  std::unordered_set<model::PartId> tableParts_;
  // Parts of one folder mostly come one after the other.
  std::string lastPath_;
  NodeId lastFolder_ = FileTree::kRoot;
  // Part names differ, and so do their paths, as long as none comes from an escape or the table.
  bool mayCollide_ = false;
};

std::string quoted(std::string_view text) {
  return "'" + std::string(text) + "'";
}

bool isInFilesFolder(std::string_view itemName) {
  const auto isSame = [](char a, char b) {
    return a == b || (b >= 'A' && b <= 'Z' && a == b + 32);
  };
  return itemName.size() > kFilesFolder.size() &&
         std::equal(kFilesFolder.begin(), kFilesFolder.end(), itemName.begin(), isSame);
}

[[noreturn]] void refuseEntry(std::string_view path, const std::string& why) {
  throw FormatError("PN-13", "wrong entry " + quoted(path) + ": " + why);
}

std::optional<std::string> TreeLoader::makeFolders(std::string_view path) {
  if (path == lastPath_) return std::nullopt;
  FileTree& nodes = tree_.nodes;
  auto [node, rest] = nodes.reach(path);
  if (nodes.isFile(node)) return quoted(nodes.path(node)) + " is a file";
  while (!rest.empty()) {
    const std::size_t slash = rest.find('/');
    node = nodes.addFolder(node, rest.substr(0, slash));
    rest.remove_prefix(slash == std::string_view::npos ? rest.size() : slash + 1);
  }
  lastPath_ = path;
  lastFolder_ = node;
  return std::nullopt;
}

std::optional<std::string> TreeLoader::insertFile(std::string_view path, model::PartId part) {
  const std::size_t slash = path.rfind('/');
  const bool inRoot = slash == std::string_view::npos;
  if (auto why = makeFolders(inRoot ? std::string_view() : path.substr(0, slash))) return why;
  const std::string_view name = inRoot ? path : path.substr(slash + 1);
  if (mayCollide_ && tree_.nodes.findChild(lastFolder_, name) != FileTree::kNone) {
    return "another entry has the path " + quoted(path);
  }
  tree_.nodes.addFile(lastFolder_, name, part);
  return std::nullopt;
}

void TreeLoader::addTableFile(const FileTreeTable::File& file) {
  const model::PartName name(fromUtf8(file.partName));
  if (!package_.hasPart(name)) {
    refuseEntry(file.path, "its part " + quoted(file.partName) + " is not in the package");
  }
  const model::PartId part = package_.getPart(name)->id();
  if (!tableParts_.insert(part).second) {
    refuseEntry(file.path, "its part " + quoted(file.partName) + " is another entry's too");
  }
  if (const auto why = insertFile(file.path, part)) refuseEntry(file.path, *why);
  mayCollide_ = true;
  tree_.tableFiles.emplace(static_cast<NodeId>(tree_.nodes.size() - 1), name.canonical());
  tree_.tableSize += FileTreeTable::entrySize(file.path);
}

void TreeLoader::addTableFolder(const std::string& path) {
  const auto [node, rest] = tree_.nodes.reach(path);
  if (tree_.nodes.isFile(node)) refuseEntry(path, quoted(tree_.nodes.path(node)) + " is a file");
  // A folder that another program has put something into is no longer empty, and no harm done.
  if (rest.empty() && tree_.nodes.hasChildren(node)) return;
  if (rest.empty()) refuseEntry(path, "it is there twice");
  makeFolders(path);
}

void TreeLoader::addPart(model::PartId part) {
  if (!tableParts_.empty() && tableParts_.contains(part)) return;
  const std::string_view itemName = package_.itemNameOf(part);
  const std::string_view encoded = itemName.substr(kFilesFolder.size());
  // Without an escape every part name is a path.
  const bool isEncoded = encoded.find('%') != std::string_view::npos;
  mayCollide_ |= isEncoded;
  if (!isEncoded) {
    if (const auto why = insertFile(encoded, part)) addUnreadable(itemName, *why);
    return;
  }
  try {
    const std::string path = model::percentDecodePath(encoded);
    if (const char* fault = findPathFault(path)) return addUnreadable(itemName, fault);
    if (hasControlCharacter(path)) return addUnreadable(itemName, "it holds a control character");
    if (const auto why = insertFile(path, part)) addUnreadable(itemName, *why);
  } catch (const FormatError&) {
    addUnreadable(itemName, "it is not UTF-8");
  }
}

void TreeLoader::addUnreadable(std::string_view itemName, const std::string& why) {
  noteUnreadable("part '/", itemName, why);
}

void TreeLoader::noteUnreadable(std::string_view kind, std::string_view itemName,
                                const std::string& why) {
  const std::string name(itemName);
  const std::string rest = "is not a file of the tree: " + why;
  tree_.unreadable.push_back(
      {"/" + name, printable("it " + rest), printable(std::string(kind) + name + "' " + rest)});
}

// Whoever packed them meant them as files.
void TreeLoader::addOtherItems(const std::vector<std::string>& names, const char* why) {
  for (const std::string& name : names) {
    if (!isInFilesFolder(name)) continue;
    noteUnreadable("item '", name, why);
  }
}

void TreeLoader::countEmptyFolder(NodeId node) {
  if (!tree_.nodes.isEmptyFolder(node)) return;
  ++tree_.emptyFolders;
  tree_.tableSize += FileTreeTable::entrySize(tree_.nodes.path(node));
}

}  // namespace

std::uint64_t maxTableNodes(std::uint64_t packageSize) {
  return std::min(kMaxTableNodes, packageSize + kFreeTableNodes);
}

FileTreeTable LoadedFileTree::table() const {
  FileTreeTable table;
  table.folders.reserve(emptyFolders);
  for (NodeId node = 0; node < nodes.size(); ++node) {
    if (nodes.isEmptyFolder(node)) table.folders.push_back(nodes.path(node));
  }
  for (const auto& [node, partName] : tableFiles) {
    table.files.push_back({nodes.path(node), partName});
  }
  return table;
}

std::uint64_t LoadedFileTree::tableNodes() const {
  std::vector<bool> counted(nodes.size());
  std::uint64_t count = 0;
  const auto countUpFrom = [&](NodeId node) {
    for (; node != FileTree::kRoot && !counted[node]; node = nodes.parent(node)) {
      counted[node] = true;
      ++count;
    }
  };
  for (NodeId node = 0; node < nodes.size(); ++node) {
    if (nodes.isEmptyFolder(node)) countUpFrom(node);
  }
  for (const auto& [node, partName] : tableFiles) countUpFrom(node);
  return count;
}

LoadedFileTree loadFileTree(model::Package& package, FileTreePart& table) {
  return TreeLoader(package).load(table);
}

}  // namespace opc::plservices
