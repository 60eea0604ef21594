// SPDX-License-Identifier: MIT
#include "opc/plservices/FileSystemManager.h"

#include <optional>
#include <utility>

#include "opc/Text.h"
#include "opc/plservices/FileContentSource.h"
#include "opc/plservices/LoadedFileTree.h"
#include "opc/plservices/TreePath.h"
#include "opc/plservices/detail/Extraction.h"
#include "opc/plservices/detail/FileTreeEditor.h"

namespace opc::plservices {

namespace {

model::StandardPartInfo partInfoOf(const FileContentSource& source) {
  model::StandardPartInfo info(interfaces::CompressionType::Normal, source.size());
  info.modified = source.modified();
  info.executable = source.executable();
  return info;
}

}  // namespace

class FileSystemManager::State {
 public:
  void load(model::Package& package) {
    FileTreePart part(package);
    LoadedFileTree loaded = loadFileTree(package, part);
    // In place, so that entries of the time before find a tree and not freed memory.
    *tree = std::move(loaded);
    editor.emplace(package, std::move(part), tree);
    openCount = package.openCount();
  }

  std::shared_ptr<LoadedFileTree> tree = std::make_shared<LoadedFileTree>();
  std::optional<detail::FileTreeEditor> editor;
  std::uint64_t openCount = 0;
};

FileSystemManager::FileSystemManager(model::Package& package)
    : package_(package), state_(std::make_unique<State>()) {}

FileSystemManager::~FileSystemManager() = default;

FileSystemManager::State& FileSystemManager::state() {
  if (!package_.isOpen()) throw Exception(ErrorCode::InvalidState, "package is not open");
  if (!state_->editor || state_->openCount != package_.openCount()) state_->load(package_);
  return *state_;
}

FileTree& FileSystemManager::nodes() {
  return state().tree->nodes;
}

FileSystemEntry FileSystemManager::entryOf(NodeId node) {
  return {package_, state_->tree->nodes, node};
}

std::uint32_t FileSystemManager::nodeOf(const FileSystemEntry& entry) {
  const FileTree& nodes = state().tree->nodes;
  if (entry.tree_ != &nodes || entry.node_ >= nodes.size()) {
    throw Exception(ErrorCode::InvalidArgument, "file system entry is of another package");
  }
  entry.tree();  // refuses what was removed
  return entry.node_;
}

FileSystemEntry FileSystemManager::getRoot() {
  state();
  return entryOf(FileTree::kRoot);
}

std::vector<FileSystemEntry> FileSystemManager::getChildren(const FileSystemEntry& folder) {
  const NodeId parent = nodeOf(folder);
  FileTree& nodes = state_->tree->nodes;
  std::vector<FileSystemEntry> children;
  for (NodeId node = nodes.firstChild(parent); node != FileTree::kNone;
       node = nodes.nextSibling(node)) {
    children.push_back(entryOf(node));
  }
  return children;
}

void FileSystemManager::visitFiles(
    const std::function<void(std::string_view, const FileSystemEntry&)>& visit) {
  TreeWalk walk(state().tree->nodes);
  while (walk.next()) visit(walk.path(), entryOf(walk.node()));
}

std::unique_ptr<FileSystemEntry> FileSystemManager::find(std::string_view path) {
  FileTree& nodes = state().tree->nodes;
  if (path.starts_with('/')) path.remove_prefix(1);
  const bool isRoot = path.empty();
  if (!isRoot && findPathFault(path) != nullptr) return nullptr;
  const NodeId node = isRoot ? FileTree::kRoot : nodes.find(path);
  if (node == FileTree::kNone) return nullptr;
  return std::make_unique<FileSystemEntry>(entryOf(node));
}

std::shared_ptr<FileSystemEntry> FileSystemManager::addFile(const std::u16string& diskPath,
                                                            const std::u16string& packagePath) {
  return addFile(std::make_unique<FileContentSource>(diskPath), toUtf8(packagePath));
}

std::shared_ptr<FileSystemEntry> FileSystemManager::addFile(
    std::unique_ptr<FileContentSource> source, std::string_view packagePath) {
  const model::StandardPartInfo info = partInfoOf(*source);
  return addFile(std::move(source), info, packagePath);
}

std::shared_ptr<FileSystemEntry> FileSystemManager::addFile(
    std::unique_ptr<interfaces::IContentSource> source, const model::StandardPartInfo& info,
    std::string_view packagePath) {
  const NodeId node = state().editor->addFile(std::move(source), info, packagePath);
  return std::make_shared<FileSystemEntry>(entryOf(node));
}

std::shared_ptr<FileSystemEntry> FileSystemManager::createFolder(
    const std::u16string& packagePath) {
  const NodeId node = state().editor->addFolder(toUtf8(packagePath));
  return std::make_shared<FileSystemEntry>(entryOf(node));
}

void FileSystemManager::replaceFile(const FileSystemEntry& file,
                                    std::unique_ptr<FileContentSource> source) {
  const model::StandardPartInfo info = partInfoOf(*source);
  replaceFile(file, std::move(source), info);
}

void FileSystemManager::replaceFile(const FileSystemEntry& file,
                                    std::unique_ptr<interfaces::IContentSource> source,
                                    const model::StandardPartInfo& info) {
  const NodeId node = nodeOf(file);
  if (!state_->tree->nodes.isFile(node)) {
    throw Exception(ErrorCode::InvalidArgument,
                    "cannot replace '" + file.path() + "': it is a folder");
  }
  state_->editor->replaceFile(node, std::move(source), info);
}

void FileSystemManager::remove(const FileSystemEntry& entry) {
  const NodeId node = nodeOf(entry);
  if (node == FileTree::kRoot) {
    throw Exception(ErrorCode::InvalidArgument, "cannot remove the root of the file tree");
  }
  state_->editor->remove(node);
}

void FileSystemManager::checkMove(const FileSystemEntry& entry, std::string_view packagePath) {
  const NodeId node = nodeOf(entry);
  if (node == FileTree::kRoot) {
    throw Exception(ErrorCode::InvalidArgument, "cannot move the root of the file tree");
  }
  state_->editor->checkMove(node, packagePath);
}

void FileSystemManager::move(const FileSystemEntry& entry, std::string_view packagePath) {
  checkMove(entry, packagePath);
  state_->editor->move(nodeOf(entry), packagePath);
}

void FileSystemManager::extractAll(const std::u16string& destination, RestoreMode mode) {
  extract({getRoot()}, toUtf8(destination), mode, nullptr);
}

void FileSystemManager::extract(const std::vector<FileSystemEntry>& entries,
                                std::string_view destination, RestoreMode mode,
                                const interfaces::ProgressFunction& progress) {
  std::vector<NodeId> chosen;
  chosen.reserve(entries.size());
  for (const FileSystemEntry& entry : entries) chosen.push_back(nodeOf(entry));
  detail::Extraction extraction(package_, state().tree->nodes, std::string(destination), mode);
  extraction.setBackground(background_);
  extraction.run(chosen, progress);
}

void FileSystemManager::extractParts(const std::vector<model::PartId>& parts,
                                     std::string_view destination, RestoreMode mode,
                                     const interfaces::ProgressFunction& progress) {
  FileTree tree;
  std::vector<NodeId> chosen;
  chosen.reserve(parts.size());
  for (const model::PartId part : parts) {
    const std::string_view path = package_.itemNameOf(part);
    const std::size_t slash = path.rfind('/');
    const bool isAtTop = slash == std::string_view::npos;
    const NodeId folder = isAtTop ? FileTree::kRoot : tree.reachFolder(path.substr(0, slash));
    chosen.push_back(tree.addFile(folder, isAtTop ? path : path.substr(slash + 1), part));
  }
  detail::Extraction extraction(package_, tree, std::string(destination), mode);
  extraction.setBackground(background_);
  extraction.run(chosen, progress);
}

model::PartId FileSystemManager::partOf(const FileSystemEntry& file) {
  const NodeId node = nodeOf(file);
  const FileTree& nodes = state_->tree->nodes;
  if (nodes.isFile(node)) return nodes.part(node);
  throw Exception(ErrorCode::InvalidArgument,
                  "cannot open '" + nodes.path(node) + "': it is a folder");
}

std::unique_ptr<InputStream> FileSystemManager::openFile(const FileSystemEntry& file) {
  return package_.openPart(partOf(file));
}

const std::vector<UnreadableFile>& FileSystemManager::unreadable() {
  return state().tree->unreadable;
}

}  // namespace opc::plservices
